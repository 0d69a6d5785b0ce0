// The runtime library's report of an invalid parameter.

#pragma once

// Reports an access outside a container the way the runtime library reports an invalid parameter. Without a handler the
// process ends with STATUS_INVALID_CRUNTIME_PARAMETER (0xC0000417); a handler may return, and then this function does.
//
// The UCRT makes the report itself, and the handler is the one that the host has set in it. The older runtime has no such
// report for other modules: there the handler is the one set with _set_invalid_parameter_handler of the module that
// this code is linked into, as the toolchain emulates it for each module, and a handler of the host is not asked.
void ReportInvalidParameter();
