/* Of the C interface: what is changed in a registry, by whomever. Include yax.h. */
#pragma once

#include "yax/yax_keys.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Somebody who wants to know what is changed, and what he has not been told yet. */
typedef struct yax_watch yax_watch;

/* What a change is. */
enum {
  YAX_KEY_CREATED = 0,  /* and those above it that were missing; as a copy with all below it */
  YAX_KEY_DELETED = 1,  /* with all below it */
  YAX_KEY_RESTORED = 2, /* anything at the key and below it */
  YAX_VALUE_CREATED = 3,
  YAX_VALUE_SET = 4,
  YAX_VALUE_DELETED = 5,
  YAX_DEFAULT_CHANGED = 6, /* the key's default value */
  YAX_RIGHTS_CHANGED = 7,
  YAX_WATCH_BITS_CHANGED = 8,
  YAX_COMPACTED = 9 /* the file, told at the root: keys and values are as before */
};

/* The texts are the watch's, until it is asked for the next change. */
typedef struct yax_change {
  unsigned kind;    /* one of the above, or a later one */
  const char* path; /* of the key, from the root; "" is the root */
  const char* name; /* of the value; "" where none is concerned */
} yax_change;

/* Milliseconds that never end. */
#define YAX_FOREVER 0xFFFFFFFFu

/* Begins to watch a key, which need not be there, and all below it; the root is everything. *watch
 * is the caller's, until yax_watch_free; it belongs to one thread at a time. */
yax_status yax_watch_key(yax_key* key, yax_watch** watch);
/* Ends it. Null: nothing. */
void yax_watch_free(yax_watch* watch);
/* The next change since the watch began, by any thread or program; what creates, deletes or
 * restores a key above is one, too. Waits for it as long as it is told; 0: does not. YAX_NO_DATA:
 * there was none in that time. YAX_LIMIT: so much was changed that some of it is not known; look at
 * everything that matters, the next answer is what came after that. YAX_BUSY: the thread has a
 * transaction, and would wait. */
yax_status yax_watch_next(yax_watch* watch, unsigned milliseconds, yax_change* change);
/* A descriptor for poll and the like, readable when something was changed since this was first
 * called and a watch of the registry was last asked with 0 milliseconds; then ask each of them so
 * until it answers YAX_NO_DATA. Threads may wait for other watches beside it. The registry's, to be
 * read or closed by nobody else. -1: none can be had. No status. */
int yax_change_descriptor(yax_registry* registry);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
