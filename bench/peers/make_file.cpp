#include <cstdio>
#include <cstdlib>

#include "dataset.h"

/// Writes the calendar file that our own measurements read, too.
int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: make_file FILE EVENTS\n", stderr);
    return 2;
  }
  orlocal::bench::writeCalendarFile(arguments[1], std::strtoul(arguments[2], nullptr, 10));
}
