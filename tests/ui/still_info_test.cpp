// What a still says of itself, as other programs read it.

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamReader>
#include <QtGui/QImage>
#include <gtest/gtest.h>

#include "OtherProgram.h"
#include "base/Version.h"

namespace tessary::test {
namespace {

PreviewView& view() { return gPreviewWindowController->getPreviewView(); }

/// One still with a line and a circle on it, under a calibration.
struct Still {
  explicit Still(const char* format) {
    const bool isPng = std::string_view(format) == "png";
    EXPECT_TRUE(program.waitForPicture());
    gPreferences->url = folder.path().toStdString();
    gPreferences->imagePNG = isPng;
    gPreferences->calibrations[3] = {.name = "\u663E & <4x>; air", .unit = 1, .ppu = 0.4};
    gPreferences->calibration = 3;
    view().setCalibration(0.4F, kUnitMicrometre);
    click(program.button("Line Item Identifier"));
    drag(program.container(), {120, 240}, {320, 240});
    view().setInputText("\u00B5 > \"grain\"");
    key("space");
    EXPECT_TRUE(waitUntil([this] { return files().size() == 1; }));
    path = folder.filePath(files().value(0));
    EXPECT_TRUE(path.endsWith(isPng ? ".png" : ".jpg"));
  }
  QStringList files() const { return QDir(folder.path()).entryList(QDir::Files); }

  QTemporaryDir folder;
  Program program;
  QString path;
};

class StillInfoOf : public ::testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(EachFormat, StillInfoOf, ::testing::Values("jpg", "png"));

TEST_P(StillInfoOf, IsReadByExiftool) {
  const QDateTime before = QDateTime::currentDateTime();
  const Still still(GetParam());
  const QByteArray json = outputOf("exiftool", {"-j", "-struct", "-d", "%s %z", still.path});
  const QJsonObject all = QJsonDocument::fromJson(json).array().at(0).toObject();
  EXPECT_EQ(all["Warning"].toString(), "");
  EXPECT_EQ(all["CreatorTool"].toString().toStdString(), "Tessary " + std::string(version()));
  const QStringList when = all["CreateDate"].toString().split(' ');
  EXPECT_GE(when.value(0).toLongLong(), before.toSecsSinceEpoch()) << json.toStdString();
  EXPECT_LE(when.value(0).toLongLong(), QDateTime::currentSecsSinceEpoch());
  EXPECT_EQ(all["Model"].toString().toStdString(), gCurrMicroscope->name);
  EXPECT_FALSE(gCurrMicroscope->name.empty());
  EXPECT_EQ(all["ImageWidth"].toInt(), 640);
  EXPECT_EQ(all["ImageHeight"].toInt(), 480);
  EXPECT_EQ(all["ExifImageWidth"].toInt(), 640);

  const QJsonObject calibration = all["Calibration"].toObject();
  EXPECT_EQ(calibration["PixelsPerUnit"].toDouble(), 0.4);
  EXPECT_EQ(calibration["Unit"].toString(), "\u03BCm");
  EXPECT_EQ(calibration["Name"].toString(), "\u663E & <4x>; air");
  const QJsonArray rows = all["Measurements"].toArray();
  ASSERT_EQ(rows.size(), 2) << json.toStdString();
  EXPECT_EQ(rows[0]["Kind"].toString(), "Line");
  EXPECT_EQ(rows[0]["Values"][0]["Value"].toDouble(), 500.0);
  EXPECT_EQ(rows[0]["Values"][0]["Unit"].toString(), "\u03BCm");
  EXPECT_EQ(rows[1]["Kind"].toString(), "Text");
  EXPECT_EQ(rows[1]["Text"].toString(), "\u00B5 > \"grain\"");

  for (const char* density : {"XResolution", "PixelsPerUnitX"})
    EXPECT_LE(all[density].toInt(), 1) << "no print resolution is claimed";
  EXPECT_NE(all["ResolutionUnit"].toString(), "inches");
  EXPECT_NE(all["ResolutionUnit"].toString(), "cm");
}

TEST_P(StillInfoOf, IsReadByImageMagickAndIsGoodXml) {
  const Still still(GetParam());
  EXPECT_EQ(outputOf("identify", {"-format", "%w %h %m", still.path}),
            std::string_view(GetParam()) == "png" ? "640 480 PNG" : "640 480 JPEG");
  const QImage read = QImage(still.path).convertToFormat(QImage::Format_RGB888);
  ASSERT_EQ(read.size(), QSize(640, 480));
  const QByteArray converted = outputOf("convert", {still.path, "-depth", "8", "rgb:-"});
  EXPECT_EQ(converted, QByteArray(reinterpret_cast<const char*>(read.constBits()), 640 * 480 * 3));

  QFile file(still.path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray bytes = file.readAll();
  const qsizetype start = bytes.indexOf("<?xpacket begin");
  const QByteArray end("<?xpacket end=\"w\"?>");
  const QByteArray packet = bytes.mid(start, bytes.indexOf(end) + end.size() - start);
  EXPECT_TRUE(packet.contains("<tessary:Value>500.000<")) << packet.toStdString();
  QXmlStreamReader xml(packet);
  while (!xml.atEnd()) xml.readNext();
  EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
  // The ImageMagick of Debian 12 does not look into the texts of a PNG file.
  if (std::string_view(GetParam()) == "jpg") {
    EXPECT_EQ(outputOf("convert", {still.path, "xmp:-"}), packet);
  }
}

}  // namespace
}  // namespace tessary::test
