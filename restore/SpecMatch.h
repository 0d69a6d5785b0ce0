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

    // `starred` begins and ends with a star, `plain` has none. Each piece ends at a star. The pieces between the stars must occur in their order;
    // the first occurrence of each leaves the most for the next.
    bool ContainsPieces(std::wstring_view starred, std::wstring_view plain)
    {
        auto piece = starred.begin();
        for (auto place = plain.begin(); piece != starred.end();) {
            auto inPiece = piece;
            auto inPlain = place;
            while (*inPiece != kStar && inPlain != plain.end() && m_canBeEqual(*inPiece, *inPlain)) {
                ++inPiece;
                ++inPlain;
            }
            if (*inPiece == kStar) {
                piece = inPiece + 1;
                place = inPlain;
            } else if (inPlain == plain.end()) {
                return false;
            } else {
                ++place;
            }
        }
        return true;
    }

    CanBeEqual m_canBeEqual;
};
