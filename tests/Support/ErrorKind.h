#pragma once

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace nomely::test {

// The typed case of the `Failure` that `body` throws; absent when it throws nothing. Other
// exceptions pass through.
template <typename Failure, typename Body>
auto kindOf(Body body) -> std::optional<decltype(std::declval<const Failure&>().kind())> {
  try {
    body();
  } catch (const Failure& failure) {
    return failure.kind();
  }
  return std::nullopt;
}

// What it says; "nothing thrown" when there is none.
template <typename Failure, typename Body>
std::string messageOf(Body body) {
  try {
    body();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "nothing thrown";
}

// Expects an expression to throw a `Failure` of that kind:
// EXPECT_FAILURE(FileError, notFound, files.read(path)).
#define EXPECT_FAILURE(Failure, kind, ...) \
  EXPECT_EQ(nomely::test::kindOf<Failure>([&] { (void)(__VA_ARGS__); }), Failure::Kind::kind)

}  // namespace nomely::test
