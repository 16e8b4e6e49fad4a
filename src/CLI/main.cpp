#include "CLI/CommandLine.h"

int main(int count, char** arguments) {
  const nomely::SystemClock clock;
  return nomely::runCommandLine({arguments + 1, arguments + count},
                                {nomely::Environment::current(), clock, nomely::posixFileSystem()});
}
