/* Stands in for the core application, so that nothing stays running. A core leads a session of its own; started in any
   other way, this is merely a program that only ends. */

#define _GNU_SOURCE
#include "core_that_ends.h"

#include <unistd.h>

int main(void) { return getsid(0) == getpid() ? CORE_STATUS : 0; }
