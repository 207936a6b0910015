/* Creates a player and destroys it through the installed library; prints "ok". */
#include <stdio.h>

#include <kesh/kesh_pattern.h>

int main(void) {
  _kesh_player* player = keshCreatePlayer("packaging consumer");
  if (player == NULL || keshDestroyPlayer(player) != 0) return 1;
  puts("ok");
  return 0;
}
