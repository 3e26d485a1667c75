// What text needs of its toolkit, and OpenGL in software, which draws the same on every machine.

#include <memory>

#include <QtGui/QGuiApplication>
#include <gtest/gtest.h>

namespace {

/// Made when the first test runs, so that listing needs neither.
class PixelEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LIBGL_ALWAYS_SOFTWARE", "1");
    application_ = std::make_unique<QGuiApplication>(argc_, argv_);
  }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[12] = "pixels_test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
};

const auto* const s_environment = ::testing::AddGlobalTestEnvironment(new PixelEnvironment);

}  // namespace
