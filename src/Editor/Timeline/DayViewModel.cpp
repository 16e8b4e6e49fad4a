#include "Editor/Timeline/DayViewModel.h"

namespace nomely {

DayViewModel::DayViewModel(const Context& context)
    : list_(context.service.context().clock.today()),
      status_(context.service.context().clock),
      jobs_(context.executor, context.jobs),
      loading_(context.service.days(), context.searchIndex, list_, jobs_),
      writing_(context.service, {list_, loading_, status_, jobs_}),
      trash_(context.service, {list_, loading_, status_, jobs_}),
      draftStore_(context.service.context()) {}

// The parts stand until the jobs that use them have ended.
DayViewModel::~DayViewModel() {
  loading_.cancel();
  jobs_.end();
}

std::optional<std::string> DayViewModel::searchSnippet(Day date, std::int64_t seqNumber) const {
  const auto& snippets = searchSnippets.get();
  const auto found = snippets.find(memoKey(date, seqNumber));
  return found == snippets.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace nomely
