#pragma once
// What the tests of the Qt adapters share: a QGuiApplication without a display, which exists from
// before the first test to after the last, and this program as a child of itself.

#include <string>
#include <vector>

namespace tessary::test {

/// How a child ended: its exit status, or minus the signal that killed it. It runs the one disabled
/// test `name`, with `environment` ("NAME=value") added to this program's own.
int runDisabledTest(const std::string& name, const std::vector<std::string>& environment);

}  // namespace tessary::test
