// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include "Serve/Cameras/Refusal.h"

/// Expects that an action is refused with this status, and for a reason.
template <typename Action>
void expectRefused(int status, Action&& action) {
    try {
        action();
        ADD_FAILURE() << "not refused, instead of " << status;
    } catch (const QuillTool::Serve::Refusal& refusal) {
        EXPECT_EQ(refusal.status, status) << refusal.what();
        EXPECT_FALSE(refusal.error.empty());
        EXPECT_STRNE(refusal.what(), "");
    }
}
