#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Lifecycle/Settling/StandingNotes.h"
#include "Core/Lifecycle/Settling/StateKeeping.h"

namespace nomely {

// Settles what lies in the days: strays, memo files with git's markers, notes that stand twice, and
// second forms of attachments. Each call is one write of the gate. Throws what reading and writing
// memo files throws.
//
// The order of steps is the same everywhere: what goes is kept first, then the diary is changed,
// and the stray goes last. Cut off in between, the next pass finds the same texts and comes to the
// same end.
class MemoSettling {
 public:
  // All that is referred to must outlive it.
  MemoSettling(const MemoService& service, StandingNotes& notes, SettlingResult& result);

  // The strays of a day, those with the earlier text first.
  void settleStrays(Day day, const std::vector<std::string>& names);
  // A memo file in which git left both sides; any other is left as it is.
  void settleMarked(const MemoPlace& place);
  // A note that stands more than once.
  void settleShared(const std::string& memoId);
  // Removes a second form of an attachment that holds the same bytes.
  void settleAttachment(Day day, const std::string& name, const std::string& base);

  // Why the stray stays; empty when it would be settled.
  [[nodiscard]] std::string faultOf(Day day, const std::string& name) const;
  // The same of a file that settleMarked would look at; absent when there are no markers.
  [[nodiscard]] std::optional<std::string> faultOfMarked(const MemoPlace& place) const;
  [[nodiscard]] std::string faultOfAttachment(Day day, const std::string& name,
                                              const std::string& base) const;
  // Where a note stands that stands more than once, and whether it would be settled.
  [[nodiscard]] std::vector<MemoPlace> placesOf(const std::string& memoId,
                                                bool& canBeSettled) const;

 private:
  // What a file holds: one text, two with git's markers taken apart, none that can be read.
  struct Sides {
    std::vector<MemoText> texts;
    std::string whole;  // its bytes, where it holds markers
    [[nodiscard]] bool areMarked() const { return !whole.empty(); }
  };
  // Notes of one identity: those that are to be removed, and those that stay, more than one where
  // it isn't clear which of them is to go.
  struct Ranks {
    std::vector<const StandingNotes::Note*> going;
    std::vector<const StandingNotes::Note*> staying;
  };

  [[nodiscard]] std::optional<Sides> sidesIn(const std::filesystem::path& file) const;

  void settleStray(Day day, const std::string& name);
  // Makes the text a note of the day, or a part of the note that it is a text of, and returns what
  // became of it; empty when that has to wait. `stray` is the file that holds it and nothing else,
  // which may be moved.
  std::string takeIn(MemoText text, Day day, const std::string& stray);
  std::string wait();
  // For a text without identity that shows what a note does. Empty: it would lose something.
  std::string joinTwin(MemoText text, const StandingNotes::Note& twin);
  std::string merge(const MemoText& text, Day day, const std::string& stray,
                    const StandingNotes::Note& standing);
  // Whether the stray is a copy of the note's very file that is not to go yet: see SecondForms.
  [[nodiscard]] bool isLastCopy(const MemoText& text, Day day, const std::string& stray,
                                const StandingNotes::Note& standing) const;
  std::string place(const MemoText& text, Day day, const std::string& stray, bool isWhole);
  // False when the number is taken.
  bool moveIn(const std::filesystem::path& file, Day day, std::int64_t seqNumber);
  void write(const MemoText& text, Day day, std::int64_t seqNumber);
  // The note of the day that shows the same as a text without an identity.
  [[nodiscard]] std::optional<StandingNotes::Note> twinOf(const MemoText& text, Day day) const;
  static void identify(MemoText& text, Day day);
  [[nodiscard]] Ranks ranksOf(const std::vector<StandingNotes::Note>& notes) const;
  void remove(const StandingNotes::Note& going, const StandingNotes::Note& staying);

  void tell(const std::filesystem::path& path, const std::string& outcome);
  [[nodiscard]] std::filesystem::path inDay(Day day, const std::string& name) const;

  const MemoService& service_;
  const StoreContext& context_;
  const DayStore& days_;
  StandingNotes& notes_;
  SettlingResult& result_;
  StateKeeping keeping_;
  bool isInGit_ = false;
  bool carriesTimes_ = true;  // whether the engine gives files the time that they had elsewhere
};

}  // namespace nomely
