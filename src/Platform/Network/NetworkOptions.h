#pragma once

#include <string>

#include "Platform/System/Environment.h"

namespace nomely {

// How the network's clients are to differ from what they usually do.
struct NetworkOptions {
  // A file of certificates (PEM) that are trusted beside those of the system's folder; empty: the
  // system's file of them.
  std::string certificates = {};

  // SSL_CERT_FILE.
  [[nodiscard]] static NetworkOptions of(const Environment& environment) {
    return {.certificates = environment.get("SSL_CERT_FILE").value_or("")};
  }
};

}  // namespace nomely
