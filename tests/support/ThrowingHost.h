// A host whose functions throw C++ exceptions through the library.

#pragma once

#include "tests/support/LibraryTest.h"

#include <Kestrovane.h>

// What it throws.
struct HostFailure {
    int call; // the log line or keep-alive at which it was thrown, from 1
};

// Registers itself; the host that comes next takes its place. One at a time.
class ThrowingHost {
public:
    ThrowingHost()
    {
        Throw(0, 0);
        SetVssFileManagerLogger(&Log, &KeepAlive, &Log);
        Throw(0, 0); // the line of the registration does not count
    }
    ~ThrowingHost() { Throw(0, 0); }
    ThrowingHost(const ThrowingHost&) = delete;
    ThrowingHost& operator=(const ThrowingHost&) = delete;

    // Throws at these calls from now on, counted from 1; 0 stands for never.
    static void Throw(int atLine, int atKeepAlive)
    {
        s_atLine = atLine;
        s_atKeepAlive = atKeepAlive;
        s_lines = 0;
        s_keepAlives = 0;
        s_hasThrown = false;
    }
    static int Lines() { return s_lines; } // logged since then
    static bool HasThrown() { return s_hasThrown; }

private:
    static int __cdecl Log(int /*level*/, const char* /*format*/, ...)
    {
        ++s_lines;
        ThrowIf(s_lines == s_atLine, s_lines);
        return 0;
    }
    static int __cdecl KeepAlive(int /*seconds*/, ...)
    {
        ++s_keepAlives;
        ThrowIf(s_keepAlives == s_atKeepAlive, s_keepAlives);
        return 0;
    }
    static void ThrowIf(bool due, int call)
    {
        if (due) {
            s_hasThrown = true;
            throw HostFailure{call};
        }
    }

    inline static int s_atLine = 0;
    inline static int s_atKeepAlive = 0;
    inline static int s_lines = 0;
    inline static int s_keepAlives = 0;
    inline static bool s_hasThrown = false;
};

// The fixture of tests that throw. The first exception of a process may cost it handles for good; it is thrown before
// the handles are counted.
class ThrowingTest : public LibraryTest {
protected:
    static void SetUpTestSuite() { EXPECT_THROW(throw HostFailure{0}, HostFailure); }
};
