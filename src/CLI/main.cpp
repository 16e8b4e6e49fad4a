#include "CLI/CommandLine.h"

int main(int count, char** arguments) {
  return nomely::runCommandLine({arguments + 1, arguments + count}, nomely::Environment::current());
}
