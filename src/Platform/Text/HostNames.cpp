#include "Platform/Text/HostNames.h"

#include <string>

#include <libpsl.h>

namespace nomely {

bool hasPublicSuffix(std::string_view host) {
  // Made into the library: nothing to load or free. Absent in a library built without one.
  static const psl_ctx_t* const list = psl_builtin();
  if (list == nullptr) return false;
  // Names that the list does not know at all count as suffixes otherwise.
  constexpr int type = PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE;
  // The last label tells: each rule of the list lies below one that is on it.
  const std::size_t last = host.rfind('.');
  return last != std::string_view::npos && last != 0 &&
         psl_is_public_suffix2(list, std::string(host.substr(last + 1)).c_str(), type) != 0;
}

}  // namespace nomely
