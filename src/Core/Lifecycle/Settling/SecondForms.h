#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// A file beside the one whose second form it is. Of a file in which git left both sides both are
// the same.
struct SecondForm {
  std::filesystem::path file;
  std::filesystem::path base;
};

// Second forms of files with known names, which aren't notes, and what can be done with them
// whatever they hold. Stateless; throw FileError.
namespace SecondForms {

// Those in a folder, by name. `baseOf` gives the name of what a name is a second form of, which
// need not be there, or nothing. None when there is no such folder.
[[nodiscard]] std::vector<SecondForm> in(
    const StoreContext& context, const std::filesystem::path& folder,
    const std::function<std::string(std::string_view name)>& baseOf);

// Whether a copy with the same contents as its base is to stay for the present. It tells that
// others lie under that name elsewhere, which may be on their way here: then the copy is all that
// is left.
[[nodiscard]] bool mayBeLast(const StoreContext& context, const std::filesystem::path& file);

// Does what needs no look at the contents: what has the same bytes as its base goes, and what has
// none takes its place. False when there is more to be done. Inside a write.
[[nodiscard]] bool settlePlainly(const StoreContext& context, const SecondForm& form,
                                 SettlingResult& result);

// Gives the file another name, `place` or one that tells its contents from those of another file
// there; it goes when its bytes lie there already. Inside a write.
void moveAside(const StoreContext& context, const std::filesystem::path& file,
               const std::filesystem::path& place);

void tell(const StoreContext& context, const SecondForm& form, const std::string& outcome,
          SettlingResult& result);
void addStrays(const StoreContext& context, const std::vector<SecondForm>& forms,
               std::vector<Stray>& strays);

}  // namespace SecondForms

}  // namespace nomely
