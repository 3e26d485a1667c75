#include "app/Application.h"

int main(int argc, char** argv) {
  tessary::Application application(argc, argv, "tessary");
  return application.run();
}
