// COM for the thread that runs the host's tests.
#include <gtest/gtest.h>
#include <objbase.h>

namespace {

class ComEnvironment final : public testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    void TearDown() override { ::CoUninitialize(); }
};

testing::Environment* const g_com = testing::AddGlobalTestEnvironment(new ComEnvironment);

} // namespace
