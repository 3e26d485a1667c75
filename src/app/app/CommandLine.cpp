#include "app/CommandLine.h"

#include <cstdio>

#include <QtCore/QCommandLineParser>

#include "base/Version.h"

namespace tessary {
namespace {

constexpr int kNotUnderstood = 2;

/// What the toolkit and its platforms take out of the command line, with a value or without.
constexpr const char* kToolkitValues[] = {
    "display", "geometry",      "icon",        "name",         "platform", "platformpluginpath",
    "plugin",  "platformtheme", "qwindowicon", "qwindowtitle", "session",  "qwindowgeometry",
    "style",   "stylesheet",    "title",       "qmljsdebugger"};
constexpr const char* kToolkitFlags[] = {"dograb", "nograb", "reverse", "sync", "widgetcount"};

void addToolkitOptions(QCommandLineParser& parser) {
  const auto add = [&parser](const char* name, const char* value) {
    QCommandLineOption option(QString::fromLatin1(name), QString(), QString::fromLatin1(value));
    option.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(option);
  };
  for (const char* name : kToolkitValues) add(name, "value");
  for (const char* name : kToolkitFlags) add(name, "");
}

std::optional<Renderer> rendererNamed(const QString& name) {
  if (name == QLatin1String("opengl")) return Renderer::kOpenGl;
  if (name == QLatin1String("raster")) return Renderer::kRaster;
  return std::nullopt;
}

CommandLine answered(int exitStatus, const QString& answer) {
  return {.exitStatus = exitStatus, .answer = answer.toStdString()};
}

}  // namespace

CommandLine readCommandLine(const std::vector<std::string>& words) {
  // The usual start, which the parser's own would hold up.
  if (words.size() < 2) return {};
  QStringList list;
  for (const std::string& word : words) list.append(QString::fromStdString(word));
  const QString program = list.first().section('/', -1);

  const QCommandLineOption help({"h", "help"}, "Tells what you are reading.");
  const QCommandLineOption version({"v", "version"}, "Tells the version.");
  const QCommandLineOption anyCamera(
      "any-camera", "Lists every camera whose pictures can be shown, not microscopes alone.");
  const QCommandLineOption renderer(
      "renderer",
      "What draws the picture: opengl for the graphics card, raster for the program itself. Left "
      "out, the graphics card if there is one.",
      "opengl|raster");
  QCommandLineParser parser;
  // The toolkit's words have a single dash.
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  parser.setApplicationDescription(
      "Shows the live picture of a USB microscope, measures on it, saves stills and movies.");
  parser.addOptions({help, version, anyCamera, renderer});
  addToolkitOptions(parser);

  const auto refused = [&program](const QString& what) {
    return answered(
        kNotUnderstood,
        QStringLiteral("%1: %2 \"%1 --help\" tells what is understood.\n").arg(program, what));
  };
  if (!parser.parse(list)) return refused(parser.errorText());
  if (!parser.positionalArguments().isEmpty())
    return refused(
        QStringLiteral("\"%1\" is not an option.").arg(parser.positionalArguments().first()));
  const auto named = rendererNamed(parser.value(renderer));
  if (parser.isSet(renderer) && !named)
    return refused(QStringLiteral("\"%1\" is no renderer.").arg(parser.value(renderer)));
  // The parser knows the program's name from the toolkit's object only, which there is not yet.
  if (parser.isSet(help))
    return answered(0, parser.helpText().replace(QStringLiteral("<executable_name>"), program));
  if (parser.isSet(version)) {
    const std::string_view number = tessary::version();
    return answered(0, QStringLiteral("%1 %2\n").arg(
                           program, QLatin1String(number.data(), qsizetype(number.size()))));
  }
  return {.eligible = parser.isSet(anyCamera) ? Eligible::AnyCamera : Eligible::Microscopes,
          .renderer = named};
}

int CommandLine::tell() const {
  std::fputs(answer.c_str(), *exitStatus == 0 ? stdout : stderr);
  return *exitStatus;
}

}  // namespace tessary
