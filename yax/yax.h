/* The C interface of libYAX: a registry is a persistent hierarchy of keys with typed values in one
 * file. C99 and newer, and C++; link with -lYAX.
 *
 *   yax_registry *registry;
 *   yax_key *eth0;
 *   int64_t mtu = 1500;
 *   yax_status status = yax_open("settings.rce", NULL, &registry);
 *   if (status != YAX_OK) return puts(yax_status_text(status)), 1;
 *   if (yax_key_at(registry, "network/eth0", &eth0) == YAX_OK) {
 *     yax_set_int(eth0, "mtu", 1400);
 *     yax_get_int(eth0, "mtu", &mtu);
 *     yax_key_free(eth0);
 *   }
 *   yax_close(registry);
 *
 * Every function answers a status, 0 for success, unless it is told otherwise; outputs are written
 * only with success, but as told. Nothing throws, exits or prints. A null pointer where one is
 * needed is YAX_BAD_ARGUMENT; names and paths end with a zero byte, their bytes count exactly.
 *
 * Any thread may call any function on any object at any time, but for the ends of objects:
 * yax_close, yax_key_free and yax_names_free must be the last that is done with one. No operation
 * leaves a lock behind. They work without key handles, so whoever uses the C++ classes of the
 * registry beside them finds his handles closed, as after each operation without one.
 */
#pragma once

#include "yax/yax_base.h"
#include "yax/yax_changes.h"
#include "yax/yax_keys.h"
#include "yax/yax_transactions.h"
#include "yax/yax_values.h"
