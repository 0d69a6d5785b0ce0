// Entry of the test programs.

#include <gtest/gtest.h>

namespace {

// The C++ runtime opens handles for the first exception of a process and keeps them, and GoogleTest does for the first
// trace. Tests that count handles find them open already.
void OpenLastingHandles()
{
    try {
        throw 0;
    } catch (int) { // only the runtime's preparation matters
        SCOPED_TRACE("");
    }
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    OpenLastingHandles();
    return RUN_ALL_TESTS();
}
