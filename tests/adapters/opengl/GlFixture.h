#pragma once

#include <epoxy/gl.h>

#include <memory>

#include <gtest/gtest.h>

#include "HeadlessContext.h"

namespace tessary::test {

/// Tests with a context of their own. A machine that can't make one fails them.
class GlTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(context_, nullptr); }
  void TearDown() override { EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)); }

 private:
  std::unique_ptr<HeadlessContext> context_ = HeadlessContext::make();
};

}  // namespace tessary::test
