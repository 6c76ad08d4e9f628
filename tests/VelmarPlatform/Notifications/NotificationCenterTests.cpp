#include "VelmarPlatform/Notifications/NotificationCenter.h"

#include "../Concurrency/Support.h"

#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace velmar {
namespace {

class Thing : public Object {};

TEST(NotificationCenter, CallsObserversInTheOrderOfRegistration) {
  NotificationCenter center;
  std::string trace;
  const auto first = center.addObserver("n", nullptr, Delivery::postingThread,
                                        [&](const Notification&) { trace += "a"; });
  const auto second = center.addObserver("n", nullptr, Delivery::postingThread,
                                         [&](const Notification&) { trace += "b"; });
  const auto other = center.addObserver("m", nullptr, Delivery::postingThread,
                                        [&](const Notification&) { trace += "!"; });
  center.post({.name = "n"});
  EXPECT_EQ(trace, "ab");
  center.post({.name = "nobody"});
}

TEST(NotificationCenter, AnObserverOfAnObjectHearsOfThatAlone) {
  NotificationCenter center;
  const auto thing = std::make_shared<Thing>();
  const auto other = std::make_shared<Thing>();
  int ofThing = 0;
  int ofAll = 0;
  const auto first = center.addObserver("n", thing, Delivery::postingThread,
                                        [&](const Notification&) { ++ofThing; });
  const auto second = center.addObserver("n", nullptr, Delivery::postingThread,
                                         [&](const Notification&) { ++ofAll; });
  center.post({.name = "n", .object = thing});
  center.post({.name = "n", .object = other});
  center.post({.name = "n"});
  EXPECT_EQ(ofThing, 1);
  EXPECT_EQ(ofAll, 3);
}

TEST(NotificationCenter, AnObserverOfAnObjectThatHasGoneHearsNothing) {
  NotificationCenter center;
  auto thing = std::make_shared<Thing>();
  int calls = 0;
  const auto observer = center.addObserver("n", thing, Delivery::postingThread,
                                           [&](const Notification&) { ++calls; });
  const std::weak_ptr<Thing> weak = thing;
  thing = nullptr;
  EXPECT_TRUE(weak.expired()) << "An observer doesn't keep its object alive.";
  center.post({.name = "n"});
  center.post({.name = "n", .object = std::make_shared<Thing>()});
  EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, CarriesWhatThePosterAdds) {
  NotificationCenter center;
  int value = 0;
  const auto observer = center.addObserver(
      "n", nullptr, Delivery::postingThread, [&](const Notification& notification) {
        value = std::any_cast<int>(notification.userInfo.at("value"));
      });
  center.post({.name = "n", .userInfo = {{"value", 7}}});
  EXPECT_EQ(value, 7);
}

TEST(NotificationCenter, AnObserverMayRemoveItselfAndOthersWhileItHandles) {
  NotificationCenter center;
  std::string trace;
  NotificationCenter::Observer first;
  NotificationCenter::Observer second;
  first = center.addObserver("n", nullptr, Delivery::postingThread, [&](const Notification&) {
    trace += "a";
    center.removeObserver(first);
    center.removeObserver(second);
    center.removeObserver(second);
  });
  second = center.addObserver("n", nullptr, Delivery::postingThread,
                              [&](const Notification&) { trace += "b"; });
  center.post({.name = "n"});
  center.post({.name = "n"});
  EXPECT_EQ(trace, "a");
}

TEST(NotificationCenter, DeliversToTheMainExecutorInOrder) {
  NotificationCenter center;
  std::string trace;
  const auto observer = center.addObserver(
      "n", nullptr, Delivery::mainExecutor, [&](const Notification& notification) {
        EXPECT_TRUE(mainExecutor().isCurrent());
        trace += std::any_cast<char>(notification.userInfo.at("mark"));
      });
  std::thread poster([&] {
    for (const char mark : {'a', 'b', 'c'})
      center.post({.name = "n", .userInfo = {{"mark", mark}}});
  });
  poster.join();
  EXPECT_EQ(trace, "");
  mainExecutor().runReady();
  EXPECT_EQ(trace, "abc");
}

TEST(NotificationCenter, DeliversAtOnceWhenPostedOnTheMainExecutor) {
  NotificationCenter center;
  std::string trace;
  const auto observer = center.addObserver("n", nullptr, Delivery::mainExecutor,
                                           [&](const Notification&) { trace += "a"; });
  testing_support::run([&] {
    center.post({.name = "n"});
    trace += "b";
  });
  EXPECT_EQ(trace, "ab");
}

TEST(NotificationCenter, AnObserverThatIsDroppedWhileANotificationIsOnItsWayIsntCalled) {
  NotificationCenter center;
  int calls = 0;
  const auto observer = center.addObserver("n", nullptr, Delivery::mainExecutor,
                                           [&](const Notification&) { ++calls; });
  center.post({.name = "n"});
  center.removeObserver(observer);
  EXPECT_EQ(mainExecutor().runReady(), 1U);
  EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, ObserversComeAndGoWhileOthersPost) {
  NotificationCenter center;
  std::atomic<bool> stop = false;
  std::atomic<int> posted = 0;
  std::thread poster([&] {
    while (!stop) {
      center.post({.name = "n"});
      ++posted;
    }
  });
  for (int round = 0; round < 300 || posted == 0; ++round) {
    auto alive = std::make_shared<std::atomic<int>>(0);
    const auto observer = center.addObserver("n", nullptr, Delivery::postingThread,
                                             [alive](const Notification&) { ++*alive; });
    center.removeObserver(observer);
  }
  stop = true;
  poster.join();
}

} // namespace
} // namespace velmar
