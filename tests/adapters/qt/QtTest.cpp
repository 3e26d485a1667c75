#include "QtTest.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

namespace tessary::test {
namespace {

class QtEnvironment final : public ::testing::Environment {
 public:
  void SetUp() override {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    application_ = std::make_unique<QGuiApplication>(argc_, argv_);
  }
  void TearDown() override { application_.reset(); }

 private:
  char name_[8] = "qt_test";
  char* argv_[2] = {name_, nullptr};
  int argc_ = 1;
  std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] const auto* const s_environment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace

int runDisabledTest(const std::string& name, const std::vector<std::string>& environment) {
  std::vector<std::string> arguments{"qt_test", "--gtest_brief=1",
                                     "--gtest_also_run_disabled_tests", "--gtest_filter=" + name};
  std::vector<std::string> variables = environment;
  // The first of two settings of a variable counts.
  for (char** variable = environ; *variable; ++variable) variables.emplace_back(*variable);
  const auto pointers = [](std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
  };
  pid_t child = -1;
  if (posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, pointers(arguments).data(),
                  pointers(variables).data()) != 0)
    return 255;
  int status = 0;
  if (waitpid(child, &status, 0) != child) return 255;
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace tessary::test
