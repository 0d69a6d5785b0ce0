// The runtime library's report of an invalid parameter.

#include "win32/InvalidParameter.h"

#include <windows.h>

#include <cstdlib>

#if defined(_UCRT) || defined(_MSC_VER)

#if !defined(_MSC_VER) // the toolchain's headers do not declare this function of the UCRT
extern "C" void __cdecl _invalid_parameter_noinfo();
#endif

void ReportInvalidParameter()
{
    ::_invalid_parameter_noinfo();
}

#else

void ReportInvalidParameter()
{
    if (const auto handler = ::_get_invalid_parameter_handler(); handler != nullptr) {
        handler(nullptr, nullptr, nullptr, 0, 0);
        return;
    }
    constexpr UINT kInvalidRuntimeParameter = 0xC0000417; // STATUS_INVALID_CRUNTIME_PARAMETER
    ::TerminateProcess(::GetCurrentProcess(), kInvalidRuntimeParameter);
}

#endif
