#include "vek/net/socket_set.h"

#include <cstring>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

using namespace vek::net;

TEST(SocketSet, IsEmptyAtFirst) {
    const SocketSet set;
    EXPECT_EQ(set.count, 0u);
    EXPECT_EQ(set.maxHandle, 0u);
    EXPECT_FALSE(set.isSet(4));
}

TEST(SocketSet, KeepsItsHandlesInTheirOrderAndTheLargest) {
    SocketSet set;
    set.add(8);
    set.add(400);
    set.add(12);
    ASSERT_EQ(set.count, 3u);
    EXPECT_EQ(set.handles[0], 8u);
    EXPECT_EQ(set.handles[1], 400u);
    EXPECT_EQ(set.handles[2], 12u);
    EXPECT_EQ(set.maxHandle, 400u);
    EXPECT_TRUE(set.isSet(12));
    EXPECT_FALSE(set.isSet(16));
}

TEST(SocketSet, HasTheLayoutOfTheSystemsSet) {
    SocketSet set;
    set.add(8);
    set.add(12);
    fd_set systemSet;
    std::memcpy(&systemSet, &set.count, sizeof systemSet);
    ASSERT_EQ(systemSet.fd_count, 2u);
    EXPECT_EQ(systemSet.fd_array[0], 8u);
    EXPECT_EQ(systemSet.fd_array[1], 12u);
    EXPECT_EQ(sizeof(SocketSet), 4 + sizeof(fd_set));
}

TEST(SocketSet, StoresAHandleOnce) {
    SocketSet set;
    set.add(8);
    set.add(8);
    EXPECT_EQ(set.count, 1u);
}

TEST(SocketSet, IgnoresTheInvalidHandle) {
    SocketSet set;
    set.add(INVALID_SOCKET);
    EXPECT_EQ(set.count, 0u);
    EXPECT_EQ(set.maxHandle, 0u);
}

TEST(SocketSet, DropsTheHandleThatFindsNoRoomButKnowsItAsTheLargest) {
    SocketSet set;
    for (NativeSocket handle = 1; handle <= 64; ++handle) {
        set.add(handle);
    }
    EXPECT_EQ(set.count, 64u);
    EXPECT_EQ(set.maxHandle, 64u);
    set.add(1000);
    EXPECT_EQ(set.count, 64u);
    EXPECT_EQ(set.maxHandle, 1000u);
    EXPECT_FALSE(set.isSet(1000));
    EXPECT_TRUE(set.isSet(64));
    set.add(64);
    EXPECT_EQ(set.count, 64u);
}

TEST(SocketSet, KeepsTheLargestHandleWhenItIsCleared) {
    SocketSet set;
    set.add(8);
    set.clear();
    EXPECT_EQ(set.count, 0u);
    EXPECT_EQ(set.maxHandle, 8u);
    EXPECT_FALSE(set.isSet(8));
    set.add(4);
    EXPECT_EQ(set.maxHandle, 8u);
}

TEST(SocketSet, CopyIsASetOfItsOwn) {
    SocketSet set;
    set.add(8);
    SocketSet copy = set;
    set.add(12);
    EXPECT_EQ(copy.count, 1u);
    EXPECT_TRUE(copy.isSet(8));
    copy.clear();
    EXPECT_TRUE(set.isSet(8));
}

TEST(SocketSet, TellsTheSystemOneMoreThanTheLargestHandle) {
    SocketSet small;
    small.add(8);
    SocketSet large;
    large.add(400);
    EXPECT_EQ(SocketSet::handleCount(nullptr, nullptr, nullptr), 1u);
    EXPECT_EQ(SocketSet::handleCount(&small, nullptr, nullptr), 9u);
    EXPECT_EQ(SocketSet::handleCount(&small, &large, nullptr), 401u);
    EXPECT_EQ(SocketSet::handleCount(&small, nullptr, &large), 401u);
    EXPECT_EQ(SocketSet::handleCount(&large, &small, &small), 401u);
}

}  // namespace
