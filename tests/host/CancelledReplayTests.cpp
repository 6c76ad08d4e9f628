// The recorded session, played while another thread cancels at moments of its own: what the engine
// may do on two threads at once.

#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "host/DocumentDigest.h"
#include "host/Languages.h"
#include "host/Session.h"
#include "tests/host/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

namespace velmar::host {
namespace {

const std::string data = sourcePath("tests/host/data/");

std::uint64_t digestOf(const Parse& document) {
  Digest digest;
  addTo(digest, document);
  return digest.value();
}

/// Cancels again and again, after pauses of up to some hundred microseconds, until it is destroyed.
class Canceller {
public:
  explicit Canceller(Parse& document)
      : thread_([this, &document] {
          std::mt19937 random(11);
          while (!isOver_) {
            for (std::atomic<unsigned> spins = random() % 100'000; spins > 0; --spins) {
            }
            document.cancelParsing();
          }
        }) {}
  ~Canceller() {
    isOver_ = true;
    thread_.join();
  }
  Canceller(const Canceller&) = delete;
  Canceller& operator=(const Canceller&) = delete;

private:
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

/// A layer that was given up has nothing; one that wasn't has all.
void checkLayers(const Parse& document, std::int64_t& givenUp) {
  for (const Parse::Layer& layer : document.layers()) {
    ASSERT_EQ(layer.lexicalSpans().count(), document.count());
    if (layer.root())
      continue;
    ++givenUp;
    ASSERT_TRUE(layer.sublayers().empty());
    ASSERT_EQ(layer.lexicalSpans().runs().size(), 1U);
  }
}

TEST(CancelledReplay, LeavesNothingBehindThatALaterEditWouldFind) {
  const Session session = readSession(velmar::testing::contentsOf(data + "page.session"));
  Languages languages({.packs = FilePath(data + "packs"), .shipped = FilePath(data), .note = ""});
  const ParseConfiguration configuration =
      *languages.configurationFor(LanguageID(session.language));
  Parse document(configuration);
  std::u16string text = session.initial;
  document.replaceSubrange({0, 0}, text);
  std::int64_t givenUp = 0;
  {
    const Canceller canceller(document);
    constexpr std::size_t enough = 500;
    for (std::size_t index = 0; index < session.edits.size(); ++index) {
      if (index >= enough && givenUp > 0)
        break;
      const SessionEdit& edit = session.edits[index];
      document.replaceSubrange(edit.range, edit.text);
      text.replace(static_cast<std::size_t>(edit.range.lowerBound),
                   static_cast<std::size_t>(edit.range.length()), edit.text);
      ASSERT_NO_FATAL_FAILURE(checkLayers(document, givenUp)) << "edit " << index;
    }
  }
  EXPECT_GT(givenUp, 0) << "the canceller never came in time";
  EXPECT_EQ(document.textFor(TextRange(0, document.count())), text);

  // Nobody cancels any more. The text goes and comes back, so that nothing of a tree before is used
  // again, and all is as in a document that nobody ever disturbed.
  document.replaceSubrange({0, document.count()}, u"");
  document.replaceSubrange({0, 0}, text);
  Parse undisturbed(configuration);
  undisturbed.replaceSubrange({0, 0}, text);
  EXPECT_EQ(digestOf(document), digestOf(undisturbed));
  EXPECT_GT(document.layers().size(), 1U);
}

} // namespace
} // namespace velmar::host
