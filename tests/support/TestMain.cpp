// Entry of the test programs.

#include <gtest/gtest.h>

namespace {

// The C++ runtime opens handles for the first exception and keeps them; tests that count handles find them open already.
void ThrowOnce()
{
    try {
        throw 0;
    } catch (int) { // only the runtime's preparation matters
    }
}

} // namespace

int main(int argc, char** argv)
{
    ThrowOnce();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
