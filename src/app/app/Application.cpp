#include "app/Application.h"

#include <QtCore/QLibraryInfo>
#include <QtGui/QIcon>
#include <QtGui/QPixmapCache>
#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>
#include <malloc.h>

#include "app/AppDelegate.h"
#include "app/DisplayChoice.h"
#include "app/RendererChoice.h"
#include "base/Version.h"
#include "ui/SharedIconsStyle.h"

/// Icons and help lie in a library, so the linker has to be told that they are wanted. Outside any
/// namespace, as the macro demands.
static void initResources() { Q_INIT_RESOURCE(tessary); }

namespace tessary {
namespace {

/// Frames, and the encoder's pictures, are larger.
constexpr int kLargeBlock = 512 * 1024;
/// Kilobytes; the toolbar's icons at twice their size take half of it.
constexpr int kScaledIcons = 1024;

/// The toolkit's application object, shown by what `displaysToTry` says.
std::unique_ptr<QApplication> makeShownApplication(int& argc, char** argv) {
  constexpr const char* kPlatforms = "QT_QPA_PLATFORM";
  const auto platforms = displaysToTry(QLibraryInfo::version(), qEnvironmentVariableIsSet);
  if (platforms) qputenv(kPlatforms, QByteArray::fromStdString(*platforms));
  auto application = std::make_unique<QApplication>(argc, argv);
  // Other programs that this one starts choose for themselves.
  if (platforms) qunsetenv(kPlatforms);
  return application;
}

}  // namespace

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv, const std::string& name) {
  // Large blocks get mappings of their own, which go back to the system with them. Left to itself
  // the C library takes them from the heap once the first was let go, and the heap keeps their
  // room.
  mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  QSurfaceFormat format;
  format.setVersion(3, 3);
  format.setProfile(QSurfaceFormat::CoreProfile);
  QSurfaceFormat::setDefaultFormat(format);
  auto application = makeShownApplication(argc, argv);
  QApplication::setStyle(new SharedIconsStyle);
  QPixmapCache::setCacheLimit(kScaledIcons);
  initResources();
  QApplication::setApplicationName(QString::fromStdString(name));
  QApplication::setApplicationVersion(
      QString::fromUtf8(version().data(), qsizetype(version().size())));
  // What the user reads is one name; settings and desktop file go by the program's own.
  QApplication::setApplicationDisplayName(QStringLiteral("Tessary"));
  QApplication::setDesktopFileName(QString::fromStdString(name));
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tessary.svg")));
  return application;
}

Application::Application(int& argc, char** argv, const std::string& name,
                         const CommandLine& commandLine)
    : application_(makeApplication(argc, argv, name)),
      platform_(name),
      eligible_(commandLine.eligible) {
  platform_.renderer = chooseRenderer(commandLine.renderer);
}

Application::~Application() = default;

int Application::run() {
  AppDelegate delegate(platform_, eligible_);
  delegate.applicationDidFinishLaunching();
  // Leaves the event loops of dialogs too, and no window is asked.
  process_.setEndHandler([] { QApplication::exit(0); });
  Process::setBrokenOffHandler([&delegate] { delegate.finishWork(); });
  const int status = QApplication::exec();
  process_.beginEnd(status);
  // Before any window goes, with which the display may go too.
  delegate.finishWork();
  Process::setBrokenOffHandler([] {});
  return status;
}

}  // namespace tessary
