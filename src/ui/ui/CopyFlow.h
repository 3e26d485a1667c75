#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include "base/Failures.h"
#include "platform/ImageEncoder.h"
#include "view/PreviewView.h"

namespace tessary {

class CopiedData;

/// How the picture and what is measured on it get into other programs: by way of the clipboard, the
/// picture with its overlay as a PNG, the measurements as a table in two forms of text. Main
/// thread.
class CopyFlow final : public QObject {
 public:
  /// All must outlive it.
  CopyFlow(PreviewView& previewView, ImageEncoder& pngEncoder, FailureListener& failures);
  /// What is still on the clipboard stays there until it is replaced or the program ends.
  ~CopyFlow() override;

  /// Without shapes there is only the picture.
  void copy();

 private:
  PreviewView& previewView_;
  ImageEncoder& pngEncoder_;
  FailureListener& failures_;
  QPointer<CopiedData> copied_;  // as long as the clipboard keeps it
};

}  // namespace tessary
