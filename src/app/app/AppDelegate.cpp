#include "app/AppDelegate.h"

#include <memory>

#include <fmt/format.h>

#include "capture/MicroscopeCatalogue.h"
#include "settings/Preferences.h"
#include "ui/CalibrationHelpWindowController.h"
#include "ui/OptionsWindowController.h"
#include "ui/PreviewWindowController.h"

namespace tessary {
namespace {

/// What both auxiliary windows do when they are asked for again: they come forward where they are.
void showAgain(QWidget& window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

}  // namespace

AppDelegate::AppDelegate(Platform& platform, Eligible eligible)
    : platform_(platform),
      defaults_(*platform.store),
      catalogue_(*platform.captureSystem, gMicroscopes, eligible) {}

AppDelegate::~AppDelegate() {
  platform_.store->setProblemHandler({});
  gOptionsWindowController.reset();
  gCalibrationHelpWindowController.reset();
  gPreviewWindowController.reset();
  gPreferences.reset();
}

void AppDelegate::applicationDidFinishLaunching() {
  Preferences::registerDefaults(defaults_);
  for (const auto& [key, value] : platform_.defaults) defaults_.registerDefaults(key, value);
  gPreferences = std::make_unique<Preferences>(defaults_, grants_);
  catalogue_.InitializeMicroscopes();
  gPreviewWindowController =
      std::make_unique<PreviewWindowController>(PreviewWindowController::Dependencies{
          *platform_.captureSystem, catalogue_, rememberedControls_, platform_.renderer,
          *platform_.openGlCompositor, *platform_.rasterCompositor, *platform_.textRasterizer,
          *gPreferences, platform_.mainQueue, *platform_.jpegEncoder, *platform_.pngEncoder,
          platform_.makeAssetWriter, platform_.clock});
  QObject::connect(gPreviewWindowController.get(), &PreviewWindowController::howToClicked,
                   [this] { howToClicked(); });
  QObject::connect(gPreviewWindowController.get(), &PreviewWindowController::preferencesClicked,
                   [this] { preferencesClicked(); });
  FailureListener& failures = gPreviewWindowController->failures();
  platform_.store->setProblemHandler([&failures](const std::string& problem) {
    if (problem.empty())
      failures.recovered(Failure::SettingsNotKept);
    else
      failures.failed(Failure::SettingsNotKept, problem);
  });
  if (grants_.unanswered()) {
    failures.failed(Failure::StillNotSaved,
                    fmt::format("The folder \"{}\" does not answer. Choose another in Options, or "
                                "start again once it does.",
                                *grants_.unanswered()));
  }
  gPreviewWindowController->showWindow();
}

void AppDelegate::finishWork() { gPreviewWindowController->finishWork(); }

void AppDelegate::preferencesClicked() {
  if (gOptionsWindowController) {
    showAgain(*gOptionsWindowController);
    return;
  }
  gOptionsWindowController = std::make_unique<OptionsWindowController>(*gPreferences);
  OptionsWindowController& options = *gOptionsWindowController;
  QObject::connect(&options, &OptionsWindowController::preferencesDidChange,
                   gPreviewWindowController.get(), &PreviewWindowController::preferencesDidChange);
  // Thrown away by OK and Cancel: the next visit builds a fresh dialog from the current settings.
  QObject::connect(&options, &QDialog::finished,
                   [] { gOptionsWindowController.release()->deleteLater(); });
  options.setParentWindow(gPreviewWindowController->window());
  options.show();
}

void AppDelegate::howToClicked() {
  if (gCalibrationHelpWindowController) {
    showAgain(*gCalibrationHelpWindowController);
    return;
  }
  gCalibrationHelpWindowController = std::make_unique<CalibrationHelpWindowController>();
  gCalibrationHelpWindowController->setParentWindow(gPreviewWindowController->window());
  gCalibrationHelpWindowController->show();
}

}  // namespace tessary
