#include "VelmarCore/Operations.h"

namespace velmar {

const TaskLocal<std::shared_ptr<OperationProtocol>> Operations::current_;
const TaskLocal<std::shared_ptr<OperationStep>> Operations::currentStep_;

void Operations::log(std::string event, const OperationLogMessage& message,
                     OperationLogItem::Kind kind, const OperationLogContext& context) {
  const std::string text = message.resolveFor(context);
  OperationLogItem item{std::move(event), std::string(withoutTrailingLineBreaks(text)),
                        std::move(kind)};
  if (const auto step = currentStep())
    step->update([item = std::move(item)](OperationStep& written) { written.appendOutput(item); });
  else if (const auto operation = current())
    operation->appendOutput(std::move(item));
}

void Operations::finish(const std::shared_ptr<OperationStep>& step, std::exception_ptr failure) {
  auto error = failure == nullptr ? nullptr : OperationError::wrapping(std::move(failure));
  step->update([error = std::move(error)](OperationStep& finished) {
    finished.setFinished();
    if (error != nullptr)
      finished.setError(error);
  });
}

} // namespace velmar
