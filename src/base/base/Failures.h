#pragma once
// What goes wrong while the program works and the user has to know of, though nobody stops working.

#include <string>

namespace tessary {

/// One cause each, so that its message can go when the cause does.
enum class Failure {
  StillNotSaved,
  OverlayLeftOut,  ///< A picture was saved or copied without what lies over it.
  NotCopied,
  MovieNotSaved,
  FramesLost,       ///< The encoder or the disk can't keep up.
  NothingRecorded,  ///< The window is hidden while a recording runs.
  Camera,           ///< In use, not permitted, without bandwidth, silent.
  FrameTooSmall,    ///< The camera's pictures are not shown.
  SettingsNotKept,
};

/// Is told what goes wrong, to tell it to the user. Main thread.
class FailureListener {
 public:
  virtual ~FailureListener() = default;
  /// `text` says in plain words what is wrong and what to do next. A failure that is told again
  /// replaces its text.
  virtual void failed(Failure failure, const std::string& text) = 0;
  /// The cause has gone; nothing happens if it had not been told.
  virtual void recovered(Failure failure) = 0;
};

}  // namespace tessary
