// The overlap of two file patterns.

#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

// Returns whether some name matches both patterns, which may both hold '*' (any run of characters) and '?' (one
// character). Case-sensitive. Allocates nothing.
[[nodiscard]] bool IsSpecMatch(std::wstring_view first, std::wstring_view second) noexcept;

// The same with a comparison of two characters, none of which is a star.
template <typename CanBeEqual>
class SpecMatcher {
public:
    explicit SpecMatcher(CanBeEqual canBeEqual) : m_canBeEqual(canBeEqual) {}

    [[nodiscard]] bool Match(std::wstring_view first, std::wstring_view second)
    {
        if (!CutFront(first, second) || !CutBack(first, second)) {
            return false;
        }
        if (first.empty() || second.empty()) {
            return IsStarsAlone(first) && IsStarsAlone(second);
        }
        // Each end now has a star on one side at least. If both sides have one, each star can match what the other side
        // has left.
        const bool firstHasStar = HasStar(first);
        if (firstHasStar && HasStar(second)) {
            return true;
        }
        return firstHasStar ? ContainsPieces(first, second) : ContainsPieces(second, first);
    }

private:
    static constexpr wchar_t kStar = L'*';

    static bool HasStar(std::wstring_view pattern) { return pattern.find(kStar) != std::wstring_view::npos; }

    static bool IsStarsAlone(std::wstring_view pattern)
    {
        return pattern.find_first_not_of(kStar) == std::wstring_view::npos;
    }

    // Cuts the characters before the first star of either pattern from both. Returns false at a mismatch.
    bool CutFront(std::wstring_view& first, std::wstring_view& second)
    {
        const std::size_t shorter = std::min(first.size(), second.size());
        std::size_t cut = 0;
        while (cut < shorter && first[cut] != kStar && second[cut] != kStar) {
            if (!m_canBeEqual(first[cut], second[cut])) {
                return false;
            }
            ++cut;
        }
        first.remove_prefix(cut);
        second.remove_prefix(cut);
        return true;
    }

    // The same for the characters after the last star.
    bool CutBack(std::wstring_view& first, std::wstring_view& second)
    {
        while (!first.empty() && !second.empty() && first.back() != kStar && second.back() != kStar) {
            if (!m_canBeEqual(first.back(), second.back())) {
                return false;
            }
            first.remove_suffix(1);
            second.remove_suffix(1);
        }
        return true;
    }

    // Cuts `plain` after the first occurrence of `piece`. Returns false if there is none.
    bool CutThrough(std::wstring_view& plain, std::wstring_view piece)
    {
        const auto equal = [this](wchar_t a, wchar_t b) { return m_canBeEqual(a, b); };
        const auto found = std::search(plain.begin(), plain.end(), piece.begin(), piece.end(), equal);
        const auto start = static_cast<std::size_t>(found - plain.begin());
        if (piece.size() > plain.size() - start) {
            return false;
        }
        plain.remove_prefix(start + piece.size());
        return true;
    }

    // `starred` begins and ends with a star, `plain` has none. The pieces between the stars must occur in their order;
    // the first occurrence of each leaves the most for the next.
    bool ContainsPieces(std::wstring_view starred, std::wstring_view plain)
    {
        while (!starred.empty()) {
            const std::size_t end = std::min(starred.find(kStar), starred.size());
            if (!CutThrough(plain, starred.substr(0, end))) {
                return false;
            }
            starred.remove_prefix(std::min(end + 1, starred.size()));
        }
        return true;
    }

    CanBeEqual m_canBeEqual;
};
