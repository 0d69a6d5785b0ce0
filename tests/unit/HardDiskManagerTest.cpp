// The disk-space object itself, on the volumes of this machine.

#include "volumes/HardDiskManager.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <type_traits>

using quorvantavss::CHardDiskManager;

TEST(HardDiskManager, HoldsThreeNumbersAfterAVirtualDestructor)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<CHardDiskManager>);
    EXPECT_EQ(sizeof(void*) + 3 * sizeof(std::uint64_t), sizeof(CHardDiskManager));
}

TEST(HardDiskManager, KeepsTheNumbersOfTheLastSuccessWhenAQueryFails)
{
    CHardDiskManager manager;
    ASSERT_TRUE(manager.QueryDiskSpace(LR"(C:\)"));
    const std::uint64_t available = manager.FreeBytesAvailable();
    const std::uint64_t total = manager.TotalBytes();
    ASSERT_GT(total, available);
    ASSERT_GT(available, 0U);
    EXPECT_FALSE(manager.QueryDiskSpace(LR"(Q:\)"));
    EXPECT_EQ(available, manager.FreeBytesAvailable());
    EXPECT_EQ(total, manager.TotalBytes());
}

TEST(HardDiskManager, ListsTheMountPathsOfAVolumeName)
{
    CHardDiskManager manager;
    wchar_t name[MAX_PATH] = {};
    ASSERT_TRUE(::GetVolumeNameForVolumeMountPointW(LR"(D:\)", name, MAX_PATH));
    EXPECT_EQ((std::vector<std::wstring>{LR"(D:\)"}), manager.GetVolumePathNames(name));
}

TEST(HardDiskManager, ListsNothingForWhatIsNoVolumeName)
{
    CHardDiskManager manager;
    EXPECT_TRUE(manager.GetVolumePathNames(LR"(D:\)").empty());
    EXPECT_TRUE(manager.GetVolumePathNames(L"").empty());
}
