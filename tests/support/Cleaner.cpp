// Calls CleanupDirectory for a directory whose clean-up may end the process: kestrovane-cleaner PATH. Ends with 1 for
// true and 0 for false.

#include <Kestrovane.h>

#include <windows.h>

#include <shellapi.h>

int main()
{
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    return arguments != nullptr && count == 2 && CleanupDirectory(arguments[1]) ? 1 : 0;
}
