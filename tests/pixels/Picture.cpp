#include "Picture.h"

#include <bit>
#include <cstdint>
#include <vector>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtGui/QImage>

namespace tessary::test {
namespace {

/// Bytes in the order blue, green, red, alpha, as pictures have them.
constexpr QImage::Format kFormat = QImage::Format_ARGB32;
static_assert(std::endian::native == std::endian::little);

QString path(const char* folder, const std::string& name, const char* ending) {
  return QDir(QString::fromUtf8(folder)).filePath(QString::fromStdString(name + ending));
}

QImage imageOver(const PixelBuffer& picture) {
  const auto [width, height] = picture.size();
  return {picture.data(), width, height, qsizetype(picture.bytesPerRow()), kFormat};
}

QImage dimmed(const QImage& image) {
  QImage result = image.convertToFormat(QImage::Format_RGB32);
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      const QRgb pixel = result.pixel(x, y);
      result.setPixel(x, y, qRgb(qRed(pixel) / 3, qGreen(pixel) / 3, qBlue(pixel) / 3));
    }
  }
  return result;
}

}  // namespace

::testing::AssertionResult looksLike(const PixelBuffer& picture, const std::string& name) {
  const QImage actual = imageOver(picture);
  const QString expectedPath = path(EXPECTED_PICTURES, name, ".png");
  if (qEnvironmentVariableIsSet("TESSARY_RENEW_PICTURES")) {
    if (actual.save(expectedPath)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "can't write " << expectedPath.toStdString();
  }

  const QString actualPath = path(ACTUAL_PICTURES, name, ".actual.png");
  const QString diffPath = path(ACTUAL_PICTURES, name, ".diff.png");
  const QImage expected = QImage(expectedPath).convertToFormat(kFormat);
  if (expected.size() != actual.size()) {
    actual.save(actualPath);
    return ::testing::AssertionFailure()
           << "no picture of this size in " << expectedPath.toStdString() << "; the actual one is "
           << actualPath.toStdString();
  }

  QImage diff;
  int count = 0;
  QPoint first;
  for (int y = 0; y < actual.height(); ++y) {
    for (int x = 0; x < actual.width(); ++x) {
      if (actual.pixel(x, y) == expected.pixel(x, y)) continue;
      if (count++ == 0) {
        first = {x, y};
        diff = dimmed(expected);
      }
      // The frame is dark and what lies over it bright.
      const bool added = qGreen(actual.pixel(x, y)) > qGreen(expected.pixel(x, y));
      diff.setPixel(x, y, added ? qRgb(255, 255, 255) : qRgb(255, 0, 0));
    }
  }
  if (count == 0) {
    QFile::remove(actualPath);
    QFile::remove(diffPath);
    return ::testing::AssertionSuccess();
  }
  actual.save(actualPath);
  diff.save(diffPath);
  const auto colour = [first](const QImage& image) {
    return image.pixelColor(first).name(QColor::HexArgb).toStdString();
  };
  return ::testing::AssertionFailure()
         << count << " pixels differ from " << expectedPath.toStdString() << ", the first at ("
         << first.x() << ", " << first.y() << "): " << colour(actual) << " instead of "
         << colour(expected) << "; see " << actualPath.toStdString() << " and "
         << diffPath.toStdString();
}

}  // namespace tessary::test
