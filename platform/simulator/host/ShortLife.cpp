#include "host/ShortLife.h"

#include <malloc.h>
#include <sqlite3.h>

namespace VorselKelp::simulator {

void prepareShortLife() {
  ::mallopt(M_TOP_PAD, 512 << 10);
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

}  // namespace VorselKelp::simulator
