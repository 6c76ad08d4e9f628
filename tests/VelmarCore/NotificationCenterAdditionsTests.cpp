#include "VelmarCore/NotificationCenterAdditions.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace velmar {

class Document : public Object {};
class Folder : public Object {};

struct DidOpen : MainActorNotification<DidOpen, Document> {
  int version = 0;
  bool operator==(const DidOpen&) const = default;
};

struct DidIndex : AsyncNotification<DidIndex, Document> {
  int count = 0;
};

struct DidRename : MainActorNotification<DidRename, Document> {
  static std::string name() { return "Renamed"; }
  static std::optional<DidRename> makeMessage(const Notification& notification) {
    const auto entry = notification.userInfo.find("to");
    if (entry == notification.userInfo.end())
      return std::nullopt;
    return DidRename{.to = std::any_cast<std::string>(entry->second)};
  }
  static Notification makeNotification(const DidRename& message) {
    return {.name = name(), .userInfo = {{"to", message.to}}};
  }
  std::string to;
};

namespace {

void runUntil(const std::function<bool()>& predicate) {
  ASSERT_TRUE(mainExecutor().runUntil(predicate, std::chrono::minutes(1)));
}

/// What asynchronous handlers noted, from any thread.
class Notes {
public:
  void add(int note) {
    const std::scoped_lock lock(mutex_);
    notes_.insert(note);
  }
  [[nodiscard]] std::multiset<int> all() const {
    const std::scoped_lock lock(mutex_);
    return notes_;
  }

private:
  mutable std::mutex mutex_;
  std::multiset<int> notes_;
};

TEST(NotificationMessage, IsNamedForItsKindAndType) {
  EXPECT_EQ(DidOpen::name(), "MainActorNotification::velmar::DidOpen");
  EXPECT_EQ(DidIndex::name(), "AsyncNotification::velmar::DidIndex");
  EXPECT_EQ(DidRename::name(), "Renamed");
}

TEST(MainActorNotification, ReachesObserversOnTheMainExecutorInOrder) {
  NotificationCenter center;
  std::vector<int> versions;
  const auto observation = addObserver<DidOpen>(center, [&](const DidOpen& message) {
    EXPECT_TRUE(mainExecutor().isCurrent());
    versions.push_back(message.version);
  });
  for (int version = 1; version <= 3; ++version)
    post(center, DidOpen{.version = version});
  EXPECT_TRUE(versions.empty());
  mainExecutor().runReady();
  EXPECT_EQ(versions, (std::vector{1, 2, 3}));
}

TEST(AsyncNotification, ReachesObserversOnThePool) {
  NotificationCenter center;
  Notes notes;
  const auto asynchronous = addObserver<DidIndex>(center, [&](DidIndex message) -> Task<void> {
    EXPECT_EQ(Executor::current(), &poolExecutor());
    notes.add(message.count);
    co_return;
  });
  const auto plain =
      addObserver<DidIndex>(center, [&](DidIndex message) { notes.add(-message.count); });
  post(center, DidIndex{.count = 1});
  post(center, DidIndex{.count = 2});
  runUntil([&] { return notes.all().size() == 4; });
  EXPECT_EQ(notes.all(), (std::multiset{-2, -1, 1, 2}));
}

TEST(NotificationMessage, AnObserverOfASubjectGetsItWithTheMessage) {
  NotificationCenter center;
  const auto document = std::make_shared<Document>();
  const auto other = std::make_shared<Document>();
  std::vector<std::pair<int, Document*>> seen;
  Notes notes;
  const auto main = addObserver<DidOpen>(
      center, document, [&](const DidOpen& message, const std::shared_ptr<Document>& subject) {
        seen.emplace_back(message.version, subject.get());
      });
  const auto asynchronous = addObserver<DidIndex>(
      center, document, [&](DidIndex message, std::shared_ptr<Document> subject) -> Task<void> {
        notes.add(subject == document ? message.count : 0);
        co_return;
      });
  post(center, DidOpen{.version = 1}, document);
  post(center, DidOpen{.version = 2}, other);
  post(center, DidOpen{.version = 3});
  post(center, DidIndex{.count = 2}, other);
  post(center, DidIndex{.count = 1}, document);
  runUntil([&] { return seen.size() == 1 && notes.all().size() == 1; });
  mainExecutor().runReady();
  EXPECT_EQ(seen, (std::vector<std::pair<int, Document*>>{{1, document.get()}}));
  EXPECT_EQ(notes.all(), (std::multiset{1}));
}

TEST(NotificationMessage, WithoutAFilterAnySubjectOfTheRightKindWillDo) {
  NotificationCenter center;
  std::vector<Document*> seen;
  const auto observation = addObserver<DidOpen>(
      center, nullptr, [&](const DidOpen&, const std::shared_ptr<Document>& subject) {
        seen.push_back(subject.get());
      });
  const auto document = std::make_shared<Document>();
  post(center, DidOpen{});
  center.post({.name = DidOpen::name(),
               .object = std::make_shared<Folder>(),
               .userInfo = {{"$_MainActorNotification", DidOpen{}}}});
  post(center, DidOpen{}, document);
  mainExecutor().runReady();
  EXPECT_EQ(seen, (std::vector{document.get()}));
}

TEST(NotificationMessage, TravelsUnderItsKindsKey) {
  NotificationCenter center;
  std::optional<DidOpen> open;
  std::optional<int> count;
  const auto first = center.addObserver(
      DidOpen::name(), nullptr, Delivery::postingThread, [&](const Notification& notification) {
        open = std::any_cast<DidOpen>(notification.userInfo.at("$_MainActorNotification"));
      });
  const auto second = center.addObserver(
      DidIndex::name(), nullptr, Delivery::postingThread, [&](const Notification& notification) {
        count = std::any_cast<DidIndex>(notification.userInfo.at("$_AsyncNotification")).count;
      });
  post(center, DidOpen{.version = 4});
  post(center, DidIndex{.count = 5});
  EXPECT_EQ(open, DidOpen{.version = 4});
  EXPECT_EQ(count, 5);
}

TEST(NotificationMessage, CanBeMadeOfANotificationThatOthersPost) {
  NotificationCenter center;
  std::vector<std::string> names;
  const auto observation = addObserver<DidRename>(
      center, [&](const DidRename& message) { names.push_back(message.to); });
  center.post({.name = "Renamed", .userInfo = {{"to", std::string("a.txt")}}});
  center.post({.name = "Renamed"});
  center.post({.name = "Renamed",
               .userInfo = {{"$_MainActorNotification", 5}, {"to", std::string("b.txt")}}});
  post(center, DidRename{.to = "c.txt"});
  mainExecutor().runReady();
  EXPECT_EQ(names, (std::vector<std::string>{"a.txt", "b.txt", "c.txt"}));
}

TEST(NotificationMessage, KeepsWhatItsNotificationSays) {
  NotificationCenter center;
  std::string to;
  const auto observer = center.addObserver(
      "Renamed", nullptr, Delivery::postingThread, [&](const Notification& notification) {
        to = std::any_cast<std::string>(notification.userInfo.at("to"));
      });
  post(center, DidRename{.to = "d.txt"});
  EXPECT_EQ(to, "d.txt");
}

// Observations

TEST(MessageObservation, LastsAsLongAsSomeCopy) {
  NotificationCenter center;
  int calls = 0;
  std::optional first = addObserver<DidOpen>(center, [&](const DidOpen&) { ++calls; });
  std::optional second = first;
  const auto postAndRun = [&] {
    post(center, DidOpen{});
    mainExecutor().runReady();
    return calls;
  };
  first.reset();
  EXPECT_EQ(postAndRun(), 1);
  second.reset();
  EXPECT_EQ(postAndRun(), 1);
}

TEST(MessageObservation, CancellingOneCopyEndsAll) {
  NotificationCenter center;
  int calls = 0;
  const auto observation = addObserver<DidOpen>(center, [&](const DidOpen&) { ++calls; });
  const auto copy = observation; // NOLINT(performance-unnecessary-copy-initialization): the point
  copy.cancel();
  copy.cancel();
  post(center, DidOpen{});
  mainExecutor().runReady();
  EXPECT_EQ(calls, 0);
}

TEST(MessageObservation, IsStoredInCollectionsAndSets) {
  NotificationCenter center;
  int calls = 0;
  const auto count = [&](const DidOpen&) { ++calls; };
  std::vector<MessageObservation> list;
  std::unordered_set<MessageObservation> set;
  addObserver<DidOpen>(center, count).storeIn(list);
  {
    const auto observation = addObserver<DidOpen>(center, count);
    observation.storeIn(set);
    observation.storeIn(set);
  }
  EXPECT_EQ(set.size(), 1U);
  post(center, DidOpen{});
  mainExecutor().runReady();
  EXPECT_EQ(calls, 2);
}

TEST(MessageObservation, DroppedWhileAMessageIsOnItsWayNothingArrives) {
  NotificationCenter center;
  int calls = 0;
  std::optional observation = addObserver<DidOpen>(center, [&](const DidOpen&) { ++calls; });
  post(center, DidOpen{});
  observation.reset();
  EXPECT_EQ(mainExecutor().runReady(), 1U);
  EXPECT_EQ(calls, 0);
}

TEST(MessageObservation, DropsAndAsynchronousMessagesRaceThreeHundredTimes) {
  NotificationCenter center;
  for (int round = 0; round < 300; ++round) {
    // The handler's captures must be whole whenever it runs, and gone in the end.
    auto held = std::make_shared<int>(round);
    const std::weak_ptr<int> watch = held;
    std::optional observation =
        addObserver<DidIndex>(center, [held, round](DidIndex) -> Task<void> {
          EXPECT_EQ(*held, round);
          co_return;
        });
    held = nullptr;
    const auto poster = spawn([&] { post(center, DidIndex{.count = round}); });
    observation.reset();
    runUntil([&] { return poster.isFinished() && watch.expired(); });
  }
}

} // namespace
} // namespace velmar
