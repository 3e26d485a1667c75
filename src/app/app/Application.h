#pragma once

#include <memory>
#include <string>

#include "app/CommandLine.h"
#include "app/Platform.h"
#include "app/Process.h"

class QApplication;

namespace tessary {

/// The toolkit's application object, set up for this program. `argc` must outlive it.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv, const std::string& name);

/// The process: the toolkit's application object and the platform behind it. No environment of its
/// own.
class Application {
 public:
  /// `name` is what the desktop knows the program by, and what its settings are kept under.
  Application(int& argc, char** argv, const std::string& name, const CommandLine& commandLine);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// May be changed until `run`.
  Platform& platform() { return platform_; }
  /// Brings the program up and runs it to its end, which may also be asked for from outside or come
  /// with the display's; a movie that runs is finished either way. What `main` returns.
  int run();

 private:
  Process process_;  // first: it ends last
  std::unique_ptr<QApplication> application_;
  Platform platform_;
  const Eligible eligible_;
};

}  // namespace tessary
