#include "ui/CopyFlow.h"

#include <functional>
#include <memory>
#include <utility>

#include <QtCore/QByteArray>
#include <QtCore/QLatin1String>
#include <QtCore/QMimeData>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

#include "output/TableText.h"
#include "output/XmpPacket.h"

namespace tessary {
namespace {

constexpr QLatin1String kPng("image/png");
/// LibreOffice takes a picture before any table, its spreadsheet too, unless a format of
/// spreadsheets is offered with it: the spreadsheet then looks again and takes the HTML, while the
/// word processor keeps to the picture. This one nobody reads any more, so that there is nothing to
/// be had of it.
constexpr QLatin1String kHasCells("application/x-openoffice-biff-5;windows_formatname=\"Biff 5\"");

}  // namespace

/// What the clipboard holds. The picture becomes a PNG when somebody asks for it: that takes as
/// long as a still, and most who paste want the table.
class CopiedData final : public QMimeData {
 public:
  explicit CopiedData(std::function<QByteArray()> encode) : encode_(std::move(encode)) {}

  /// Nothing that the encoding works with is needed any more afterwards.
  void encodeNow() const {
    if (encode_) png_ = std::exchange(encode_, {})();
  }

  /// The picture first: of programs that take either, most paste what is named first.
  QStringList formats() const override {
    const QStringList texts = QMimeData::formats();
    return texts.isEmpty() ? QStringList(kPng) : QStringList(kPng) + texts + QStringList(kHasCells);
  }

 protected:
  QVariant retrieveData(const QString& mimeType, QMetaType preferred) const override {
    if (mimeType != kPng) return QMimeData::retrieveData(mimeType, preferred);
    encodeNow();
    return png_;
  }

 private:
  mutable std::function<QByteArray()> encode_;
  mutable QByteArray png_;
};

CopyFlow::CopyFlow(PreviewView& previewView, ImageEncoder& pngEncoder, FailureListener& failures)
    : previewView_(previewView), pngEncoder_(pngEncoder), failures_(failures) {}

CopyFlow::~CopyFlow() {
  if (copied_) copied_->encodeNow();
}

void CopyFlow::copy() {
  auto picture = previewView_.copyPicture();
  if (picture->byteCount() == 0) return;
  auto info = previewView_.stillInfo();
  const MeasurementTable& table = info.table;
  const QString text = QString::fromStdString(tabSeparatedText(table));
  const QString html = QString::fromStdString(htmlText(table));
  const bool isMeasured = !table.rows.empty();
  auto data = std::make_unique<CopiedData>([this, picture, info = std::move(info)] {
    const std::vector<uint8_t> png = encodedStill(pngEncoder_, *picture, info);
    if (png.empty()) {
      failures_.failed(Failure::NotCopied,
                       "The picture was not copied: there is not enough memory. Close other "
                       "programs and copy it again.");
    } else {
      failures_.recovered(Failure::NotCopied);
    }
    return QByteArray(reinterpret_cast<const char*>(png.data()), qsizetype(png.size()));
  });
  if (isMeasured) {
    data->setText(text);
    data->setHtml(html);
  }
  copied_ = data.get();
  QGuiApplication::clipboard()->setMimeData(data.release());
}

}  // namespace tessary
