#include "VelmarParser/Grammar/TreeDisposal.h"

#include "VelmarParser/Grammar/ObjectDisposal.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <variant>
#include <vector>

namespace velmar {

namespace {

struct ParserDeleter {
  void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
};
using Garbage =
    std::variant<ParseTree, std::unique_ptr<TSParser, ParserDeleter>, std::shared_ptr<void>>;

/// One thread for the whole process, started when it is first needed and never joined: at exit
/// there is nothing that must be freed.
class DisposalThread {
public:
  static DisposalThread& shared() {
    static auto* const instance = new DisposalThread;
    return *instance;
  }

  void add(Garbage garbage) {
    {
      const std::scoped_lock lock(mutex_);
      pending_.push_back(std::move(garbage));
    }
    wake_.notify_one();
  }

private:
  DisposalThread() {
    std::thread([this] { run(); }).detach();
  }

  [[noreturn]] void run() {
    while (true) {
      std::vector<Garbage> batch;
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return !pending_.empty(); });
        batch.swap(pending_);
      }
      batch.clear();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<Garbage> pending_;
};

} // namespace

void disposeInBackground(ParseTree tree) {
  DisposalThread::shared().add(std::move(tree));
}

void disposeTree(ParseTree tree) {
  // Some ten nanoseconds a node against the ten or more microseconds that waking a thread takes.
  constexpr std::uint32_t manyNodes = 4096;
  if (ts_node_descendant_count(tree.rootNode().base()) > manyNodes)
    disposeInBackground(std::move(tree));
}

void disposeInBackground(TSParser* parser) {
  DisposalThread::shared().add(std::unique_ptr<TSParser, ParserDeleter>(parser));
}

void disposeInBackground(std::shared_ptr<void> object) {
  DisposalThread::shared().add(std::move(object));
}

} // namespace velmar
