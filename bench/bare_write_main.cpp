#include "bench/BareWrite.h"

// The floor of a command that adds a note: a process that replaces one file and does nothing else.
int main(int argc, char** argv) {
  if (argc != 4) return 2;
  return nomely::bench::bareWrite(argv[1], argv[2], argv[3]) ? 0 : 1;
}
