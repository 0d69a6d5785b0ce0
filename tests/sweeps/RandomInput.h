// Random strings with the odd corners of Windows' paths, the same for the same seed.

#pragma once

#include <cstdint>
#include <random>
#include <string>

class RandomInput {
public:
    explicit RandomInput(std::uint64_t seed) : m_engine(seed) {}

    // Below `end`, which is not 0.
    std::size_t Below(std::size_t end);
    bool OneIn(std::size_t chances) { return Below(chances) == 0; }
    // Of these characters alone.
    std::wstring Of(const std::wstring& alphabet, std::size_t longest);
    // A path of any kind: drives, shares, devices, long forms, parent steps, streams, broken names.
    std::wstring Path();

private:
    std::wstring Component();
    void Damage(std::wstring& path);

    std::mt19937_64 m_engine;
};
