// Replacement of one import of the library, to leave the platform out of a measurement.

#pragma once

namespace bench {

// Replaces the import for the scope. Ends the program if the library has no such import.
class ImportPatch {
public:
    ImportPatch(const char* function, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    void** m_slot;
    void* m_original;
};

} // namespace bench
