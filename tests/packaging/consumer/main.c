/* Creates a player and destroys it through the installed library; exits 0 when both work. */
#include <kesh/kesh_pattern.h>

int main(void) {
  _kesh_player* player = keshCreatePlayer("packaging consumer");
  return !player || keshDestroyPlayer(player) != 0;
}
