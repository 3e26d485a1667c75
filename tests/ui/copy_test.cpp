// Copy: what other programs find on the clipboard.

#include <QtCore/QMimeData>
#include <QtCore/QTemporaryDir>
#include <QtGui/QClipboard>
#include <QtGui/QImage>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <gtest/gtest.h>

#include "OtherProgram.h"
#include "ui/InputTextWindowController.h"

namespace tessary::test {
namespace {

/// With this beside the picture, the spreadsheet of LibreOffice takes the table, as it was seen to.
constexpr const char* kHasCells = "application/x-openoffice-biff-5;windows_formatname=\"Biff 5\"";

PreviewView& view() { return gPreviewWindowController->getPreviewView(); }

QAction& copyItem(Program& program) {
  for (QAction* action : program.window().menuBar()->actions()[2]->menu()->actions())
    if (action->objectName() == "Copy Item Identifier") return *action;
  ADD_FAILURE() << "no such menu item";
  return *program.window().menuBar()->actions()[2];
}

/// What the clipboard offers.
QStringList targets() {
  return QString::fromLatin1(outputOf("xclip", {"-o", "-selection", "clipboard", "-t", "TARGETS"}))
      .split('\n', Qt::SkipEmptyParts);
}
/// What it gives to a program that asks for this kind.
QByteArray paste(const char* target) {
  return outputOf("xclip", {"-o", "-selection", "clipboard", "-t", target});
}

/// Another text is on the clipboard before.
class Copy : public ::testing::Test {
 protected:
  void SetUp() override {
    QGuiApplication::clipboard()->setText("before");
    ASSERT_TRUE(waitUntil([] { return QGuiApplication::clipboard()->text() == "before"; }));
  }
  static void begin(Program& program) {
    ASSERT_TRUE(program.waitForPicture());
    program.microscope->freeze(std::chrono::minutes(5));
  }
  static void draw(Program& program, const char* tool, QPoint from, QPoint to) {
    click(program.button(tool));
    drag(program.container(), from, to);
  }
  static bool copies() {
    key("ctrl+c");
    return waitUntil([] {
      const QMimeData* data = QGuiApplication::clipboard()->mimeData();
      return data && data->hasFormat("image/png");
    });
  }
};

TEST_F(Copy, GivesThePictureToThoseWhoWantOneAndTheTableToTheOthers) {
  QTemporaryDir folder;
  Program program;
  ASSERT_NO_FATAL_FAILURE(begin(program));
  gPreferences->calibrations[3] = {.name = "4x <air>", .ppu = 400.0};
  gPreferences->calibration = 3;
  view().setCalibration(400.0F, kUnitMillimetre);
  draw(program, "Line Item Identifier", {120, 240}, {320, 240});
  draw(program, "Circle Item Identifier", {400, 340}, {440, 340});
  moveTo(program.container(), {600, 200});
  ASSERT_TRUE(copies());

  const QStringList offered = targets();
  for (const char* target : {"image/png", "text/html", "text/plain", "UTF8_STRING", kHasCells})
    EXPECT_TRUE(offered.contains(target)) << target;
  const char* const kTable =
      "Line\t0.500\tmm\t\t\t\t\t4x <air>\n"
      "Circle\t0.100\tmm\t0.628\tmm\t12.566\tmm^2\t4x <air>\n";
  EXPECT_EQ(paste("UTF8_STRING").toStdString(), kTable);
  EXPECT_EQ(paste("text/plain").toStdString(), kTable);
  const QByteArray html = paste("text/html");
  EXPECT_TRUE(html.contains(">0.500</td><td>mm</td>")) << html.toStdString();
  EXPECT_TRUE(html.contains("<td>4x &lt;air&gt;</td></tr>")) << html.toStdString();

  gPreferences->url = folder.path().toStdString();
  gPreferences->imagePNG = 1;
  ASSERT_TRUE(view().saveImageFile("still.png"));
  const QImage copied = QImage::fromData(paste("image/png"), "PNG");
  EXPECT_EQ(copied.size(), QSize(640, 480));
  EXPECT_EQ(copied, QImage(folder.filePath("still.png"))) << "the same picture as a still";
  EXPECT_EQ(copied.pixelColor(220, 240), QColor(0, 230, 230)) << "with its overlay";
}

TEST_F(Copy, FromTheMenuIsTheSame) {
  Program program;
  ASSERT_NO_FATAL_FAILURE(begin(program));
  draw(program, "Rectangle Item Identifier", {120, 240}, {320, 340});
  ASSERT_TRUE(openMenu("e"));
  key("y");
  EXPECT_TRUE(waitUntil([] { return QGuiApplication::clipboard()->text() != "before"; }));
  EXPECT_EQ(paste("UTF8_STRING").toStdString(),
            "Rectangle\t200.000\tpx\t100.000\tpx\t20000.000\tpx^2\t\n")
      << "in pixels, without a calibration";
}

TEST_F(Copy, WithoutShapesThereIsOnlyThePicture) {
  Program program;
  ASSERT_NO_FATAL_FAILURE(begin(program));
  ASSERT_TRUE(copies());
  const QStringList offered = targets();
  EXPECT_TRUE(offered.contains("image/png"));
  for (const char* target : {"text/html", "text/plain", "UTF8_STRING", kHasCells})
    EXPECT_FALSE(offered.contains(target)) << target;
}

TEST_F(Copy, InATextFieldTheKeyIsTheFields) {
  Program program;
  ASSERT_NO_FATAL_FAILURE(begin(program));
  key("ctrl+t");
  ASSERT_TRUE(waitUntil([&] {
    const auto* sheet = program.window().findChild<InputTextWindowController*>();
    return sheet && hasKeyboard(*sheet);
  }));
  xdotool({"type", "grain"});
  key("ctrl+a");
  key("ctrl+c");
  EXPECT_TRUE(waitUntil([] { return QGuiApplication::clipboard()->text() == "grain"; }));
  EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasFormat("image/png"));
  EXPECT_FALSE(copyItem(program).isEnabled());
  key("Escape");
  EXPECT_TRUE(waitUntil([&] { return copyItem(program).isEnabled(); }));
}

TEST_F(Copy, NeedsAPicture) {
  Program program;
  ASSERT_TRUE(program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return copyItem(program).isEnabled(); }));
  program.microscope->unplug();
  EXPECT_TRUE(waitUntil([&] { return !copyItem(program).isEnabled(); }));
  key("ctrl+c");
  EXPECT_EQ(paste("UTF8_STRING"), "before");
}

TEST_F(Copy, WaitsForTheFirstFrame) {
  Program program(Start{.furnish = [](Platform& platform) {
    static_cast<SimulatedCaptureSystem&>(*platform.captureSystem).freeze(std::chrono::seconds(4));
  }});
  ASSERT_TRUE(waitUntil([&] { return program.isEnabled("Line Item Identifier"); }));
  EXPECT_FALSE(copyItem(program).isEnabled()) << "the camera is open, and there is no picture yet";
  ASSERT_TRUE(program.waitForPicture());
  EXPECT_TRUE(waitUntil([&] { return copyItem(program).isEnabled(); }));
}

TEST_F(Copy, StaysOnTheClipboardWhenTheWindowHasGone) {
  {
    Program program;
    ASSERT_NO_FATAL_FAILURE(begin(program));
    ASSERT_TRUE(copies());
  }
  EXPECT_EQ(QImage::fromData(paste("image/png"), "PNG").size(), QSize(640, 480));
}

/// Has no memory for any picture.
class FailingEncoder final : public ImageEncoder {
 public:
  std::vector<uint8_t> encode(const PixelBuffer&, const std::string&) override { return {}; }
  size_t xmpRoom() const override { return 0; }
};

TEST_F(Copy, APictureThatCanNotBeEncodedIsToldOfAndTheTableIsThere) {
  Program program(Start{.furnish = [](Platform& platform) {
    platform.pngEncoder = std::make_unique<FailingEncoder>();
  }});
  ASSERT_NO_FATAL_FAILURE(begin(program));
  draw(program, "Line Item Identifier", {120, 240}, {320, 240});
  ASSERT_TRUE(copies());
  EXPECT_EQ(paste("UTF8_STRING"), "Line\t200.000\tpx\t\t\t\t\t\n");
  auto* line = program.find<QLabel>("failureText");
  ASSERT_TRUE(line);
  EXPECT_FALSE(line->text().contains("not copied"));
  QGuiApplication::clipboard()->mimeData()->data("image/png");
  EXPECT_TRUE(waitUntil([&] { return line->text().contains("The picture was not copied"); }));
}

}  // namespace
}  // namespace tessary::test
