#pragma once

#include <string>

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QStringList>
#include <gtest/gtest.h>

#include "Program.h"

namespace tessary::test {

/// What another program writes when it is run like this, while events run here, as it may ask this
/// one for something. A failure if it is not there, complains or does not end well.
inline QByteArray outputOf(const char* program, const QStringList& arguments) {
  QProcess process;
  process.start(QString::fromLatin1(program), arguments);
  const bool ended = waitUntil([&] { return process.state() == QProcess::NotRunning; });
  EXPECT_NE(process.error(), QProcess::FailedToStart)
      << program << " is missing: tools/packages.sh test";
  EXPECT_TRUE(ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
      << program << " " << arguments.join(' ').toStdString();
  EXPECT_EQ(process.readAllStandardError().toStdString(), "") << program;
  return process.readAllStandardOutput();
}

}  // namespace tessary::test
