#include "app/Application.h"

int main(int argc, char** argv) {
  const tessary::CommandLine commandLine = tessary::readCommandLine({argv, argv + argc});
  if (commandLine.exitStatus) return commandLine.tell();
  tessary::Application application(argc, argv, "tessary", commandLine);
  return application.run();
}
