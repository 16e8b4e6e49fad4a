#include "Editor/Timeline/DayViewModel.h"

#include <utility>

#include "Platform/System/Log.h"

namespace nomely {

DayViewModel::DayViewModel(const Context& context)
    : list_(context.service.context().clock.today()),
      status_(context.service.context().clock),
      jobs_(context.executor, context.jobs),
      loading_(context.service.days(), context.searchIndex, list_, jobs_),
      writing_(context.service, {list_, loading_, status_, jobs_}),
      trash_(context.service, {list_, loading_, status_, jobs_, writing_}),
      draftStore_(context.service.context(), context.machineDrafts),
      service_(context.service) {}

// The parts stand until the jobs that use them have ended.
DayViewModel::~DayViewModel() {
  loading_.cancel();
  ending_.request_stop();
  jobs_.end();
}

void DayViewModel::undoFlomoImport(UndoCompletion completion) {
  undoImport(&ImportUndoManager::undoFlomoImport, std::move(completion));
}

void DayViewModel::undoLatestNotesImport(UndoCompletion completion) {
  undoImport(&ImportUndoManager::undoLatestNotesImport, std::move(completion));
}

void DayViewModel::undoImport(Undo undo, UndoCompletion completion) {
  jobs_.write(
      [this, undo]() -> std::size_t {
        try {
          return (ImportUndoManager(service_).*undo)({.stop = ending_.get_token()});
        } catch (const Error& error) {
          Log::error(LogChannel::app, "⚠️ DayViewModel.undoImport: {}", error.what());
          return 0;
        }
      },
      [this, completion = std::move(completion)](std::size_t moved) {
        if (moved > 0) {
          loadAllMemos();
          loadTrash();
          status_.callBack();
        }
        completion(moved);
      });
}

std::optional<std::string> DayViewModel::searchSnippet(Day date, std::int64_t seqNumber) const {
  const auto& snippets = searchSnippets.get();
  const auto found = snippets.find(memoKey(date, seqNumber));
  return found == snippets.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace nomely
