// Random strings with the odd corners of Windows' paths.

#include "tests/sweeps/RandomInput.h"

#include <iterator>

namespace {

constexpr std::size_t kLongestPath = 32767; // characters

constexpr const wchar_t* kBeginnings[] = {L"",
                                          L"",
                                          L"",
                                          L"",
                                          LR"(\)",
                                          LR"(\\)",
                                          LR"(C:\)",
                                          LR"(\\.\C:\)",

                                          LR"(\\.\pipe\)",
                                          LR"(\\?\GLOBALROOT\Device\)",
                                          LR"(\\none)",
                                          L"C:",
                                          L"Q:\\",
                                          LR"(\\?\)",
                                          LR"(\\.\)",
                                          LR"(\\?\C:\)",
                                          LR"(\\?\UNC\)",
                                          LR"(\\none\share\)",

                                          LR"(\??\)",
                                          LR"(..\)",
                                          LR"(..\..\)",
                                          LR"(.\)"};
constexpr const wchar_t* kOddComponents[] = {L".",
                                             L"..",
                                             L"...",
                                             L"NUL",
                                             L"CON.txt",
                                             L"com1",
                                             L"AUX",
                                             L"prn.txt",
                                             L"LPT1",
                                             L"COM\xB9",
                                             L"CONIN$",

                                             L"a:stream:$DATA",
                                             L"a. . ",
                                             L"a.",
                                             L"a ",
                                             L" a",
                                             L"a:b",
                                             L":s:$DATA",
                                             L"*",
                                             L"?",
                                             L"%TEMP%",
                                             L"%s%n",
                                             L"Volume{",
                                             L"",
                                             L"a.b.c.d",
                                             L"~1",
                                             L"\xE9\x416"};

} // namespace

// The same on every platform, unlike the distributions of the standard library.
std::size_t RandomInput::Below(std::size_t end)
{
    return static_cast<std::size_t>(m_engine() % end);
}

std::wstring RandomInput::Of(const std::wstring& alphabet, std::size_t longest)
{
    std::wstring string(Below(longest + 1), L'\0');
    for (wchar_t& character : string) {
        character = alphabet[Below(alphabet.size())];
    }
    return string;
}

std::wstring RandomInput::Component()
{
    return OneIn(3) ? kOddComponents[Below(std::size(kOddComponents))] : L"q" + Of(L"abZ.9 -", 10);
}

void RandomInput::Damage(std::wstring& path)
{
    constexpr wchar_t kDamage[] = {L'\0', L'\xD800', L'\xDC00', L'\xFFFF', L'/', L'"', L'\t', L'|', L'<'};
    path.insert(Below(path.size() + 1), 1, kDamage[Below(std::size(kDamage))]);
}

std::wstring RandomInput::Path()
{
    constexpr std::size_t kMostComponents = 6;
    std::wstring path = kBeginnings[Below(std::size(kBeginnings))];
    for (std::size_t left = Below(kMostComponents); left > 0; --left) {
        path += Component();
        path += left > 1 || OneIn(3) ? L"\\" : L"";
    }
    if (OneIn(4)) {
        Damage(path);
    }
    if (OneIn(200)) { // one name, around the limits of components and paths
        constexpr std::size_t kLengths[] = {255, 256, 259, 260, 261, 4096, kLongestPath};
        const std::size_t length = kLengths[Below(std::size(kLengths))];
        path.append(length > path.size() ? length - path.size() : 0, L'x');
    }
    return path;
}
