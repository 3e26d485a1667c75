#include <gtest/gtest.h>

#include "dialogs/FailureMessages.h"

namespace tessary {
namespace {

struct FailureMessagesTest : ::testing::Test {
  FailureMessagesTest() {
    messages.setDidChange([this] { ++changes; });
  }
  void pass(int seconds) {
    for (int i = 0; i < seconds; ++i) messages.secondPassed();
  }

  FailureMessages messages;
  int changes = 0;
};

TEST_F(FailureMessagesTest, SayNothingAtFirst) {
  EXPECT_EQ(messages.text(), "");
  messages.secondPassed();
  messages.recovered(Failure::Camera);
  EXPECT_EQ(changes, 0);
}

TEST_F(FailureMessagesTest, AMessageGoesAfterTenSeconds) {
  messages.failed(Failure::StillNotSaved, "full");
  pass(9);
  EXPECT_EQ(messages.text(), "full");
  pass(1);
  EXPECT_EQ(messages.text(), "");
  EXPECT_EQ(changes, 2);
}

TEST_F(FailureMessagesTest, AMessageGoesWithItsCause) {
  messages.failed(Failure::SettingsNotKept, "read-only");
  messages.recovered(Failure::SettingsNotKept);
  EXPECT_EQ(messages.text(), "");
  EXPECT_EQ(changes, 2);
}

TEST_F(FailureMessagesTest, IsSaidOnce) {
  EXPECT_EQ(messages.takeUnsaid(), "");
  messages.failed(Failure::Camera, "in use");
  EXPECT_EQ(messages.takeUnsaid(), "in use");
  EXPECT_EQ(messages.takeUnsaid(), "");
  messages.failed(Failure::FramesLost, "slow");
  EXPECT_EQ(messages.takeUnsaid(), "slow");
  messages.failed(Failure::FramesLost, "slow");
  EXPECT_EQ(messages.takeUnsaid(), "") << "it only goes on";
  messages.recovered(Failure::FramesLost);
  EXPECT_EQ(messages.text(), "in use");
  EXPECT_EQ(messages.takeUnsaid(), "") << "it was said before the other";
  messages.failed(Failure::Camera, "not permitted");
  EXPECT_EQ(messages.takeUnsaid(), "not permitted");
}

TEST_F(FailureMessagesTest, EveryPictureThatIsNotSavedIsSaid) {
  for (int i = 0; i < 2; ++i) {
    messages.failed(Failure::StillNotSaved, "full");
    EXPECT_EQ(messages.takeUnsaid(), "full");
  }
}

TEST_F(FailureMessagesTest, WhatIsWrongWithTheCameraStaysUntilItIsPutRight) {
  messages.failed(Failure::Camera, "in use");
  pass(1000);
  EXPECT_EQ(messages.text(), "in use");
  messages.recovered(Failure::Camera);
  EXPECT_EQ(messages.text(), "");
}

TEST_F(FailureMessagesTest, ToldAgainItHasItsFullTimeAndItsNewText) {
  messages.failed(Failure::FramesLost, "1 frame");
  pass(9);
  messages.failed(Failure::FramesLost, "2 frames");
  EXPECT_EQ(messages.text(), "2 frames");
  pass(9);
  EXPECT_EQ(messages.text(), "2 frames");
  messages.failed(Failure::FramesLost, "2 frames");
  EXPECT_EQ(changes, 2) << "the same words change nothing on screen";
  pass(9);
  EXPECT_EQ(messages.text(), "2 frames");
}

TEST_F(FailureMessagesTest, TheNewestIsShownAndTheOneBelowKeepsItsTime) {
  messages.failed(Failure::SettingsNotKept, "settings");
  pass(4);
  messages.failed(Failure::StillNotSaved, "still");
  pass(10);
  EXPECT_EQ(messages.text(), "settings");
  pass(5);
  EXPECT_EQ(messages.text(), "settings");
  pass(1);
  EXPECT_EQ(messages.text(), "");
}

TEST_F(FailureMessagesTest, ACauseThatGoesBelowAnotherChangesNothingInSight) {
  messages.failed(Failure::Camera, "camera");
  messages.failed(Failure::StillNotSaved, "still");
  messages.recovered(Failure::Camera);
  EXPECT_EQ(messages.text(), "still");
  EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace tessary
