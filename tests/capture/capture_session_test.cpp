#include <gmock/gmock.h>

#include "FakeCaptureSystem.h"
#include "ManualExecutor.h"
#include "capture/CaptureSession.h"

namespace tessary {
namespace {

using test::FakeInput;
using test::frameOf;
using testing::ElementsAre;
using testing::IsEmpty;

class Counter final : public CaptureVideoDataOutputSampleBufferDelegate {
 public:
  void captureOutputDidOutputSampleBuffer(const SampleBuffer&) override { ++frames; }
  void captureOutputDidDropSampleBuffer(const SampleBuffer&) override {}
  int frames = 0;  // read after the session has stopped
};

class CaptureSessionTest : public testing::Test {
 protected:
  CaptureSessionTest() {
    output->setSampleBufferDelegate(&counter, std::make_shared<SerialQueue>("frames"));
    session.setRuntimeErrorHandler([this](const std::string& reason) { errors.push_back(reason); });
  }
  std::shared_ptr<FakeInput> makeInput(const std::string& id) {
    return std::make_shared<FakeInput>(log, std::make_shared<test::FakeDevice>(log, id));
  }
  void start() {
    session.addInput(input);
    session.addOutput(output);
    session.startRunning();
    log->take();
  }

  std::shared_ptr<test::CallLog> log = std::make_shared<test::CallLog>();
  test::ManualExecutor mainQueue;
  Counter counter;
  std::vector<std::string> errors;
  std::shared_ptr<FakeInput> input = makeInput("m1");
  std::shared_ptr<CaptureVideoDataOutput> output = std::make_shared<CaptureVideoDataOutput>();
  CaptureSession session{mainQueue};
};

TEST_F(CaptureSessionTest, StreamsWhileItRunsWithAnInputAndAnOutput) {
  EXPECT_FALSE(session.isRunning());
  session.beginConfiguration();
  session.addInput(input);
  session.addOutput(output);
  session.commitConfiguration();
  EXPECT_EQ(input->sink(), nullptr);
  session.startRunning();
  EXPECT_TRUE(session.isRunning());
  EXPECT_EQ(input->sink(), output.get());
  session.startRunning();
  session.stopRunning();
  EXPECT_FALSE(session.isRunning());
  session.stopRunning();
  EXPECT_THAT(log->calls(), ElementsAre("m1.open", "m1.startStreaming", "m1.stopStreaming"));
}

TEST_F(CaptureSessionTest, RunsWithoutAnythingToStream) {
  session.startRunning();
  EXPECT_TRUE(session.isRunning());
  session.addInput(input);
  EXPECT_EQ(input->sink(), nullptr);
  session.addOutput(output);
  EXPECT_NE(input->sink(), nullptr);
}

TEST_F(CaptureSessionTest, NothingBeginsToFlowBeforeTheCommit) {
  session.startRunning();
  session.beginConfiguration();
  session.beginConfiguration();
  session.addInput(input);
  session.addOutput(output);
  session.commitConfiguration();
  EXPECT_EQ(input->sink(), nullptr);
  session.commitConfiguration();
  EXPECT_NE(input->sink(), nullptr);
}

TEST_F(CaptureSessionTest, TakesOneInputOnly) {
  EXPECT_FALSE(session.canAddInput(nullptr));
  EXPECT_TRUE(session.canAddInput(input));
  session.addInput(input);
  EXPECT_FALSE(session.canAddInput(input));
  const auto second = makeInput("m2");
  EXPECT_FALSE(session.canAddInput(second));
  session.addInput(second);
  EXPECT_EQ(session.input(), input);
  session.removeInput(input);
  EXPECT_TRUE(session.canAddInput(second));
}

TEST_F(CaptureSessionTest, RemovingEndsTheStream) {
  start();
  session.removeInput(input);
  EXPECT_EQ(input->sink(), nullptr);
  EXPECT_EQ(session.input(), nullptr);
  session.addInput(input);
  session.removeOutput(output);
  EXPECT_EQ(input->sink(), nullptr);
  EXPECT_EQ(session.output(), nullptr);
  EXPECT_THAT(log->calls(),
              ElementsAre("m1.stopStreaming", "m1.startStreaming", "m1.stopStreaming"));
}

TEST_F(CaptureSessionTest, RemovingWhatItDoesNotHaveChangesNothing) {
  start();
  session.removeInput(nullptr);
  session.removeInput(makeInput("m2"));
  session.removeOutput(nullptr);
  session.removeOutput(std::make_shared<CaptureVideoDataOutput>());
  EXPECT_EQ(session.input(), input);
  EXPECT_EQ(session.output(), output);
  EXPECT_EQ(input->sink(), output.get());
}

TEST_F(CaptureSessionTest, AllThatWasDeliveredIsHandledWhenItHasStopped) {
  start();
  for (int i = 0; i < 20; ++i) input->sink()->deliver(frameOf(1, 1, i));
  session.stopRunning();
  EXPECT_EQ(uint64_t(counter.frames) + output->droppedFrames(), 20u);
}

TEST_F(CaptureSessionTest, AFailedStreamStopsItAndTakesItsInputAway) {
  start();
  std::thread([sink = input->sink()] { sink->streamFailed("no bandwidth"); }).join();
  // Not before the main thread's turn.
  EXPECT_TRUE(session.isRunning());
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_EQ(mainQueue.runAll(), 1);
  EXPECT_FALSE(session.isRunning());
  EXPECT_EQ(session.input(), nullptr);
  EXPECT_EQ(session.output(), output);
  EXPECT_THAT(errors, ElementsAre("no bandwidth"));
  EXPECT_THAT(log->calls(), ElementsAre("m1.stopStreaming"));
}

TEST_F(CaptureSessionTest, AFailureIsToldOnce) {
  start();
  input->sink()->streamFailed("first");
  input->sink()->streamFailed("second");
  mainQueue.runAll();
  EXPECT_THAT(errors, ElementsAre("first"));
}

TEST_F(CaptureSessionTest, AFailureThatIsOvertakenByAStopIsNotToldOfTheNextStream) {
  start();
  input->sink()->streamFailed("late news");
  session.stopRunning();
  session.removeInput(input);
  const auto second = makeInput("m2");
  session.addInput(second);
  session.startRunning();
  mainQueue.runAll();
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_EQ(session.input(), second);
  EXPECT_TRUE(session.isRunning());
}

TEST_F(CaptureSessionTest, AFailureMayReachASessionThatIsGone) {
  auto ending = std::make_unique<CaptureSession>(mainQueue);
  ending->setRuntimeErrorHandler([this](const std::string& reason) { errors.push_back(reason); });
  ending->addInput(input);
  ending->addOutput(output);
  ending->startRunning();
  input->sink()->streamFailed("too late");
  ending = nullptr;
  EXPECT_EQ(mainQueue.runAll(), 1);
  EXPECT_THAT(errors, IsEmpty());
}

TEST_F(CaptureSessionTest, TheErrorHandlerMayEndTheSession) {
  auto ending = std::make_unique<CaptureSession>(mainQueue);
  ending->setRuntimeErrorHandler([&](const std::string&) { ending = nullptr; });
  ending->addInput(input);
  ending->addOutput(output);
  ending->startRunning();
  input->sink()->streamFailed("no bandwidth");
  mainQueue.runAll();
  EXPECT_EQ(ending, nullptr);
}

TEST_F(CaptureSessionTest, EndingItEndsTheStream) {
  {
    CaptureSession ending(mainQueue);
    ending.addInput(input);
    ending.addOutput(output);
    ending.startRunning();
  }
  EXPECT_EQ(input->sink(), nullptr);
}

}  // namespace
}  // namespace tessary
