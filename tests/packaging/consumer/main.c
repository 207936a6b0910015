/* Creates a player and destroys it through the installed library; prints "ok". */
#include <stdio.h>

#include <kesh/kesh_pattern.h>

int main(void) {
  _kesh_player* player = keshCreatePlayer("packaging consumer");
  if (player == NULL) {
    fputs("keshCreatePlayer failed\n", stderr);
    return 1;
  }
  if (keshDestroyPlayer(player) != 0) {
    fputs("keshDestroyPlayer failed\n", stderr);
    return 1;
  }
  puts("ok");
  return 0;
}
