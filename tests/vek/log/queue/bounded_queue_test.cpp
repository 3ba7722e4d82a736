#include "vek/log/queue/bounded_queue.h"

#include <atomic>
#include <memory>
#include <new>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/log/queue/waiting_threads.h"

namespace {

using vek::log::BoundedQueue;
using vek_test::ScopedThread;
using vek_test::systemErrorOf;

using Element = std::unique_ptr<int>;
using Queue = BoundedQueue<Element>;

class BoundedQueueOn : public vek_test::OnEachSystem {};
INSTANTIATE_TEST_SUITE_P(Systems, BoundedQueueOn, vek_test::eachSystem, vek_test::systemName);

using WatchedQueue = vek_test::WatchedSleeps;

TEST_P(BoundedQueueOn, GivesWhatCameFirstFirst) {
    Queue queue(3);
    for (int i = 0; i < 3; ++i) {
        queue.push(std::make_unique<int>(i));
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(*queue.pop(), i);
    }
}

TEST_P(BoundedQueueOn, TakesANullLikeAnyOther) {
    Queue queue(2);
    queue.push(nullptr);
    queue.push(std::make_unique<int>(1));
    EXPECT_EQ(queue.pop(), nullptr);
    EXPECT_EQ(*queue.pop(), 1);
}

TEST_P(BoundedQueueOn, WakesThoseWhoWaitOnBothSides) {
    // As small as can be, so that nearly each operation waits for the other side.
    Queue queue(1);
    constexpr int producers = 4;
    constexpr int consumers = 3;
    constexpr int each = 1500;
    std::atomic<int> sum = 0;
    {
        std::vector<std::unique_ptr<ScopedThread>> threads;
        for (int c = 0; c < consumers; ++c) {
            threads.push_back(std::make_unique<ScopedThread>([&] {
                for (int i = 0; i < producers * each / consumers; ++i) {
                    sum += *queue.pop();
                }
            }));
        }
        for (int p = 0; p < producers; ++p) {
            threads.push_back(std::make_unique<ScopedThread>([&] {
                for (int i = 0; i < each; ++i) {
                    queue.push(std::make_unique<int>(1));
                }
            }));
        }
    }
    EXPECT_EQ(sum, producers * each);
}

TEST_P(BoundedQueueOn, DestroysWhatIsLeft) {
    const auto watched = std::make_shared<int>(1);
    {
        BoundedQueue<std::shared_ptr<int>> queue(5);
        queue.push(watched);
        queue.push(watched);
        EXPECT_EQ(watched.use_count(), 3);
    }
    EXPECT_EQ(watched.use_count(), 1);
}

// An element whose move fails when `movesToFailure` comes down to 0.
struct Fragile {
    Fragile(int ownNumber, std::atomic<int>& moves) : number(ownNumber), movesToFailure(&moves) {}
    Fragile(Fragile&& other) : number(other.number), movesToFailure(other.movesToFailure) {
        if (--*movesToFailure == 0) {
            throw std::bad_alloc();
        }
    }
    Fragile& operator=(Fragile&&) = delete;

    int number;
    std::atomic<int>* movesToFailure;
};

TEST_F(WatchedQueue, SleepsOnlyWhenEmpty) {
    Queue queue(2);
    queue.push(std::make_unique<int>(7));
    queue.pop();
    EXPECT_EQ(sleeps(), 0u);
    int got = 0;
    {
        ScopedThread consumer([&] { got = *queue.pop(); });
        EXPECT_TRUE(someoneSleeps(1));
        queue.push(std::make_unique<int>(8));
    }
    EXPECT_EQ(got, 8);
}

TEST_F(WatchedQueue, SleepsOnlyWhenFull) {
    Queue queue(2);
    queue.push(std::make_unique<int>(1));
    queue.push(std::make_unique<int>(2));
    EXPECT_EQ(sleeps(), 0u);
    {
        ScopedThread producer([&] { queue.push(std::make_unique<int>(3)); });
        EXPECT_TRUE(someoneSleeps(1));
        EXPECT_EQ(*queue.pop(), 1);
    }
    EXPECT_EQ(*queue.pop(), 2);
    EXPECT_EQ(*queue.pop(), 3);
}

TEST_F(WatchedQueue, EachWokenProducerWakesTheNextWhileThereIsRoom) {
    constexpr int count = 3;
    Queue queue(count);
    std::atomic<int> appended = 0;
    std::vector<std::unique_ptr<ScopedThread>> producers;
    for (int i = 0; i < count; ++i) {
        queue.push(nullptr);
    }
    for (int i = 0; i < count; ++i) {
        producers.push_back(std::make_unique<ScopedThread>([&] {
            queue.push(std::make_unique<int>(1));
            ++appended;
        }));
    }
    EXPECT_TRUE(someoneSleeps(count));
    queue.clear();
    EXPECT_TRUE(vek_test::becomesTrue([&] { return appended == count; }));
    // Frees those that still wait.
    queue.clear();
}

TEST_F(WatchedQueue, EachWokenConsumerWakesTheNextWhileThereAreElements) {
    constexpr int count = 3;
    Queue queue(count);
    std::atomic<int> sum = 0;
    std::vector<std::unique_ptr<ScopedThread>> consumers;
    for (int i = 0; i < count; ++i) {
        consumers.push_back(std::make_unique<ScopedThread>([&] { sum += *queue.pop(); }));
    }
    EXPECT_TRUE(someoneSleeps(count));
    for (int i = 0; i < count; ++i) {
        queue.push(std::make_unique<int>(1));
    }
    EXPECT_TRUE(vek_test::becomesTrue([&] { return sum == count; }));
}

TEST_F(WatchedQueue, ProducerThatIsWokenAndFailsLeavesItsRoomToTheNext) {
    std::atomic<int> movesToFailure = 0;
    BoundedQueue<Fragile> queue(1);
    queue.push(Fragile(0, movesToFailure));
    std::atomic<int> failures = 0;
    std::atomic<int> appended = 0;
    const auto produce = [&] {
        try {
            queue.push(Fragile(1, movesToFailure));
            ++appended;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    };
    ScopedThread first(produce);
    ScopedThread second(produce);
    ASSERT_TRUE(someoneSleeps(2));
    // The first move is that of `pop`, the second that of the thread that it wakes.
    movesToFailure = 2;
    EXPECT_EQ(queue.pop().number, 0);
    EXPECT_TRUE(vek_test::becomesTrue([&] { return appended == 1 && failures == 1; }));
    // Frees the second, if it still waits.
    queue.clear();
}

TEST_F(WatchedQueue, FailureToSleepIsTheStandardSystemErrorAndLeavesTheQueueUsable) {
    Queue queue(1);
    failSleepsWith(ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(systemErrorOf([&] { queue.pop(); }), ERROR_NOT_ENOUGH_MEMORY);
    queue.push(std::make_unique<int>(1));
    EXPECT_EQ(systemErrorOf([&] { queue.push(std::make_unique<int>(2)); }),
              ERROR_NOT_ENOUGH_MEMORY);
    failSleepsWith(0);
    EXPECT_EQ(*queue.pop(), 1);
    {
        ScopedThread consumer([&] { EXPECT_EQ(*queue.pop(), 3); });
        queue.push(std::make_unique<int>(3));
    }
}

}  // namespace
