// All exported functions.

#include "tests/contract/functions/ExportedFunction.h"

std::vector<ExportedFunction> AllFunctions()
{
    std::vector<ExportedFunction> all;
    for (const auto* functions : {&kFrameFunctions, &kPathFunctions, &kStringFunctions, &kFileFunctions,
                                  &kListingFunctions, &kDeletionFunctions, &kCopyFunctions, &kVolumeFunctions,
                                  &kOwnerFunctions, &kRestoreFunctions, &kCacheFunctions}) {
        all.insert(all.end(), functions->begin(), functions->end());
    }
    return all;
}
