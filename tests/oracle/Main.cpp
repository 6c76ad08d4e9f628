// velmarOracle SESSION: plays a session and compares the document with the plain reference after
// every edit, and with a fresh parse. Says where they differ first, and fails.
//
//     velmar shrink fault.session --output small.session -- build/dev/tests/velmarOracle

#include "VelmarPlatform/Files/FileContents.h"
#include "host/SessionFile.h"
#include "tests/Support/Oracle.h"
#include "tests/packs/PackLanguages.h"

#include <iostream>

namespace {

using namespace velmar;

int play(const FilePath& path) {
  host::StringOutput output;
  const host::Streams streams{
      .readInput = [](std::int64_t) { return Bytes(); },
      .output = output,
      .errors = output,
      .now = [] { return std::chrono::nanoseconds(0); },
      .environment = [](auto) { return std::nullopt; },
      .environmentVariables = [] { return std::map<std::string, std::string, std::less<>>(); }};
  const host::Session session = host::readSessionFile(path, streams).session;
  const auto languages = velmar::testing::PackLanguages::make();
  velmar::testing::CheckedParse document(languages->configuration(session.language), 1);
  std::int64_t number = 0;
  try {
    document.edit({0, 0}, session.initial);
    for (const host::SessionEdit& edit : session.edits) {
      ++number;
      document.edit(edit.range, edit.text);
    }
  } catch (const std::exception& difference) {
    std::cout << "After edit " << number << ": " << difference.what() << '\n';
    return 1;
  }
  std::cout << document.counts() << '\n';
  return 0;
}

} // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::cerr << "velmarOracle needs one session.\n";
    return 2;
  }
  try {
    return play(FilePath(words[1]));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}
