#include "qt/QtTextRasterizer.h"

#include <QColor>
#include <QFont>
#include <QFontInfo>
#include <QGlyphRun>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <bit>
#include <cmath>

#include "base/Log.h"

namespace tessary {
namespace {

const QString kFamily = QStringLiteral("Open Sans");

/// Qt lays out in numbers that end at 8 million pixels; nobody sees so much of one line.
constexpr qsizetype kLongestLine = 4096;
constexpr qreal kWidestLine = 8e6;
constexpr int32_t kLargestPixelSize = 480;

/// More than a picture full of labels has, each up to some ten kilobytes of outlines.
constexpr size_t kMostLinesKept = 512;

QFont fontOf(const Font& font) {
  QFont result(kFamily);
  result.setWeight(QFont::Light);
  result.setPixelSize(std::clamp(font.pixelSize, 1, kLargestPixelSize));
  result.setHintingPreference(QFont::PreferNoHinting);
  result.setStyleStrategy(QFont::StyleStrategy(QFont::PreferOutline | QFont::PreferAntialias |
                                               QFont::NoSubpixelAntialias));
  return result;
}

/// Line breaks and other control characters become blanks: there is one line, and it is visible.
QString oneLine(const std::string& text) {
  QString line = QString::fromStdString(text).left(kLongestLine);
  for (QChar& c : line) {
    const bool breaks = c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
    if (breaks || c.category() == QChar::Other_Control) c = QChar::Space;
  }
  return line;
}

/// The smallest rectangle of whole pixels that holds `rect`. Filling works in sixty-fourths of a
/// pixel, and so does this: what is smaller is noise.
QRect wholePixels(const QRectF& rect) {
  const auto low = [](qreal value) { return int(std::floor(std::round(value * 64.0) / 64.0)); };
  const auto high = [](qreal value) { return int(std::ceil(std::round(value * 64.0) / 64.0)); };
  const QPoint topLeft(low(rect.left()), low(rect.top()));
  return {topLeft, QSize(high(rect.right()) - topLeft.x(), high(rect.bottom()) - topLeft.y())};
}

float component(double value) { return value > 0.0 ? float(std::min(value, 1.0)) : 0.0F; }

}  // namespace

/// One line of text as outlines, its baseline starting at 0, 0, with y downward.
struct QtTextRasterizer::Line {
  static Line of(const std::string& text, const Font& font);

  QPainterPath glyphs;
  QRectF box;  // from ascent to descent, over the whole advance
};

QtTextRasterizer::Line QtTextRasterizer::Line::of(const std::string& text, const Font& font) {
  QTextLayout layout(oneLine(text), fontOf(font));
  // From the left in every language: the line has no right edge to start from.
  QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  option.setFlags(QTextOption::IncludeTrailingSpaces);
  layout.setTextOption(option);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (line.isValid()) line.setLineWidth(kWidestLine);
  layout.endLayout();

  Line result;
  result.glyphs.setFillRule(Qt::WindingFill);
  if (!line.isValid()) return result;
  const qreal ascent = line.ascent();
  result.box = QRectF(0.0, -ascent, line.naturalTextWidth(), ascent + line.descent());
  for (const QGlyphRun& run : line.glyphRuns()) {
    const QRawFont rawFont = run.rawFont();
    const QList<quint32> indexes = run.glyphIndexes();
    const QList<QPointF> positions = run.positions();
    for (qsizetype i = 0; i < indexes.size(); ++i) {
      const QPointF origin = positions[i] - QPointF(0.0, ascent);
      result.glyphs.addPath(rawFont.pathForGlyph(indexes[i]).translated(origin));
    }
  }
  return result;
}

QtTextRasterizer::QtTextRasterizer() {
  if (QFontInfo(fontOf({})).family() != kFamily)
    log("The font {} is not installed; labels are drawn in another one.", kFamily.toStdString());
}

QtTextRasterizer::~QtTextRasterizer() = default;

const QtTextRasterizer::Line& QtTextRasterizer::layOut(const std::string& text, const Font& font) {
  const std::pair key(text, font.pixelSize);
  const auto found = lines_.find(key);
  if (found != lines_.end()) return *found->second;
  if (lines_.size() >= kMostLinesKept) lines_.clear();
  return *lines_.emplace(key, std::make_unique<Line>(Line::of(text, font))).first->second;
}

Size QtTextRasterizer::imageBounds(const std::string& text, const Font& font) {
  const Line& line = layOut(text, font);
  if (line.glyphs.isEmpty()) return {};
  const QRect bounds = wholePixels(line.glyphs.boundingRect());
  return {double(bounds.width()), double(bounds.height())};
}

void QtTextRasterizer::drawLine(const std::string& text, const Font& font, const Color& color,
                                double x, double baseline, const Bitmap& bitmap) {
  // Red and blue change places in the format and in the colour, which comes to the same bytes: Qt
  // fills this format four times as fast as the one that says what it is.
  static_assert(std::endian::native == std::endian::little);
  QImage image(bitmap.data, bitmap.width, bitmap.height, bitmap.bytesPerRow,
               QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return;
  const Line& line = layOut(text, font);
  const QPointF origin(x, bitmap.height - baseline);

  QPainter painter(&image);
  painter.fillRect(wholePixels(line.box.translated(origin)), Qt::black);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(origin);
  painter.fillPath(line.glyphs, QColor::fromRgbF(component(color.blue), component(color.green),
                                                 component(color.red), component(color.alpha)));
}

}  // namespace tessary
