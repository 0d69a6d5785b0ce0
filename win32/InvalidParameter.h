// The runtime library's report of an invalid parameter.

#pragma once

// Reports an access outside a container as the runtime library reports an invalid parameter. Without a handler the
// process ends with STATUS_INVALID_CRUNTIME_PARAMETER (0xC0000417). If a handler returns, this function returns.
//
// With the UCRT, the handler is the one that the host has set for the process. The older runtime offers no such report
// to other modules: there the handler is the one that was set with _set_invalid_parameter_handler inside the module
// that this code is linked into, and the handler of a host is not called.
void ReportInvalidParameter();
