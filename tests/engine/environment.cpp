// Every test program makes the same start-up call as the editor and the tool.
#include <gtest/gtest.h>

#include "shell/tables.h"

namespace {

class EngineEnvironment : public ::testing::Environment {
public:
    void SetUp() override { lv::InitEngineTables(); }
};

// GoogleTest owns and deletes registered environments.
[[maybe_unused]] ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new EngineEnvironment);

}  // namespace
