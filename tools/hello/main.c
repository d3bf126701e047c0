/* Starts and stops the library and says what it did. The command-line tool
 * takes its place as the main job once the first format reads. */
#include <stdio.h>

#include "ostrel/ostrel.h"

int main(void) {
  printf("Ostrel_init -> %d\n", Ostrel_init());
  printf("foundation started: %d\n", Tarnex_startCount());
  printf("Ostrel_init -> %d (nested)\n", Ostrel_init());
  Ostrel_exit();
  printf("Ostrel_exit: foundation still started: %d\n", Tarnex_startCount());
  Ostrel_exit();
  printf("Ostrel_exit: foundation started: %d\n", Tarnex_startCount());
  return 0;
}
