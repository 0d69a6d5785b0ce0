// Times of the calls that grow with their input: listings, specification matching, copies.

#include <Kestrovane.h>

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <functional>

namespace {

constexpr const wchar_t* kRoot = LR"(C:\kestrovane-bench)";

int __cdecl DropLog(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

int __cdecl DropKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

void Measure(const char* name, const std::function<void()>& work)
{
    constexpr int kRuns = 5;
    double best = 0;
    for (int run = 0; run < kRuns; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        best = run == 0 ? time.count() : std::min(best, time.count());
    }
    std::printf("%-44s %10.2f ms (best of %d)\n", name, best, kRuns);
}

void WriteFileOfSize(const std::wstring& path, DWORD size)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const std::string bytes(size, 'x');
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), size, &written, nullptr);
    ::CloseHandle(file);
}

void MeasureListing()
{
    constexpr int kFiles = 2000;
    const std::wstring directory = std::wstring(kRoot) + LR"(\list)";
    RecursivelyCreateDirectory(directory);
    for (int i = 0; i < kFiles; ++i) {
        WriteFileOfSize(directory + L"\\" + std::to_wstring(i * 7919 % kFiles), 1);
    }
    Measure("list 2,000 files", [&] { ListFilesFilter(directory, L"*", true); });
}

void MeasureMatching()
{
    constexpr std::size_t kLength = 2000;
    std::wstring path = L"C:\\";
    std::wstring stars;
    while (stars.size() < kLength) {
        stars += L"*A";
    }
    std::wstring others = stars + L"B";
    Measure("match two specifications of 2,000 characters",
            [&] { IsFileDescMatch(path, stars, false, path, others, false); });
}

void MeasureCopy()
{
    constexpr DWORD kSize = 64U << 20U; // bytes
    const std::wstring source = std::wstring(kRoot) + LR"(\source)";
    WriteFileOfSize(source, kSize);
    Measure("copy 64 MiB", [&] { DoCopyComponentFile(source, std::wstring(kRoot) + LR"(\target)"); });
}

} // namespace

int main()
{
    SetVssFileManagerLogger(&DropLog, &DropKeepAlive, &DropLog);
    RecursivelyCreateDirectory(kRoot);
    MeasureListing();
    MeasureMatching();
    MeasureCopy();
    return CleanupDirectory(kRoot) ? 0 : 1;
}
