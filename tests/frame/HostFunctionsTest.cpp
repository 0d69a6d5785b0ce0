// Registration of the host's functions, and the keep-alive call.

#include "tests/support/LibraryTest.h"

class SendKATest : public LibraryTest {};

TEST_F(SendKATest, LogsItsLocationAndThenAsksFor600Seconds)
{
    SendKA("anything");
    const std::vector<HostEvent> expected = {
        {HostEvent::Kind::kLog, 2, "%s::%d::%s\n", L"frame/FileManager.cpp::154::SendKA\n"},
        {HostEvent::Kind::kKeepAlive, 600, {}, {}},
    };
    EXPECT_EQ(expected, host.Events());
}
