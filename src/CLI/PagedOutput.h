#pragma once

#include "CLI/Session.h"

namespace nomely {

// Standard output for a long listing: through $PAGER when it is a terminal, as git's listings, and
// never for JSON. Without a pager the listing is printed as it is. The pager is waited for at the
// end of the object's life.
class PagedOutput {
 public:
  explicit PagedOutput(const Session& session);
  ~PagedOutput();
  PagedOutput(const PagedOutput&) = delete;
  PagedOutput& operator=(const PagedOutput&) = delete;

 private:
  int pager_ = -1;  // process id
  int terminal_ = -1;
};

}  // namespace nomely
