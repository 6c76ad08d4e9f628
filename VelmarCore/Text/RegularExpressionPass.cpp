#include "VelmarCore/Text/RegularExpressionPass.h"

#include "VelmarCore/Text/RegularExpression.h"

#include <algorithm>

namespace velmar {

bool RegularExpressionPass::isOff(const RegularExpression& expression) const noexcept {
  return isPatternOff(expression.compiled_.get());
}

std::vector<std::string> RegularExpressionPass::patternsOff() const {
  std::vector<std::string> patterns;
  for (const Account& account : accounts_)
    if (account.isOff)
      patterns.push_back(account.pattern->pattern());
  return patterns;
}

void RegularExpressionPass::charge(const std::shared_ptr<const CompiledPattern>& pattern,
                                   std::chrono::nanoseconds time, bool wasStopped) {
  auto account = std::ranges::find(accounts_, pattern, &Account::pattern);
  if (account == accounts_.end())
    account = accounts_.insert(account, Account{.pattern = pattern});
  account->time += time;
  account->isOff = account->isOff || wasStopped || account->time >= limits_.perPattern;
}

} // namespace velmar
