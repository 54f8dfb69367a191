/* Of the C interface: several changes as one. Include yax.h. */
#pragma once

#include "yax/yax_keys.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Several changes as one, by one thread. */
typedef struct yax_transaction yax_transaction;

/* What this thread changes in the registry from here to yax_commit happens whole or not at all,
 * whatever the end or the death of the process. Until then this thread alone sees it, and changes
 * by other threads and programs wait: be brief. *transaction is the caller's; the same thread must
 * end it by one of the two below, before the registry is closed. Transactions nest, then the
 * outermost decides. */
yax_status yax_begin(yax_registry* registry, yax_transaction** transaction);
/* Makes it happen. With any other answer than YAX_OK everything is as before yax_begin. The
 * transaction is gone in any case. Null: YAX_BAD_ARGUMENT. */
yax_status yax_commit(yax_transaction* transaction);
/* Takes everything back; the transaction is gone. Null: nothing. */
void yax_cancel(yax_transaction* transaction);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
