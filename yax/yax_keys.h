/* Of the C interface: keys and lists of names. Include yax.h. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "yax/yax_base.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A place in the registry, where a key may be. It holds no lock and no memory of the key, and stays
 * good whatever others make and remove. */
typedef struct yax_key yax_key;

/* Names a key, by components with "/" between them; "" is the root. Nothing is looked up. *key is
 * the caller's, until yax_key_free. YAX_BAD_ARGUMENT: an empty component. */
yax_status yax_key_at(yax_registry* registry, const char* path, yax_key** key);
/* The same, from a key on. */
yax_status yax_key_below(const yax_key* key, const char* path, yax_key** below);
/* Gives the object back; the key stays. Null: nothing. */
void yax_key_free(yax_key* key);
/* Its path from the root; the key's. No status. */
const char* yax_key_path(const yax_key* key);
/* Keeps a failure for yax_failure_text, for interfaces that are made over this one: of a value of
 * the key, or with a null name of the key itself; with a null key, of a path that names none, which
 * is the name then. The reason is more than the status tells, static, or null. Answers the status.
 */
yax_status yax_note_failure(const yax_key* key, const char* name, yax_status status,
                            const char* reason);

/* Makes the key, and those above it. YAX_EXISTS. */
yax_status yax_key_make(yax_key* key);
/* YAX_OK or YAX_NOT_FOUND. */
yax_status yax_key_exists(const yax_key* key);
/* Removes the key with its values and all keys below it. YAX_BAD_ARGUMENT: the root. */
yax_status yax_key_remove(yax_key* key);
/* Gives the key, or a copy of it, with all below, another path from the root. The keys above it are
 * made. A moved key keeps owners and rights, a copy is the current user's. YAX_EXISTS;
 * YAX_BAD_ARGUMENT: the path lies within the key. The object goes on naming the old path. */
yax_status yax_key_move(yax_key* key, const char* path);
yax_status yax_key_copy(const yax_key* key, const char* path);
/* A number that belongs to the key itself. YAX_NO_DATA: none is set. */
yax_status yax_key_get_default(const yax_key* key, uint64_t* number);
yax_status yax_key_set_default(yax_key* key, uint64_t number);
/* The owner's rights in the low four bits, everybody else's above: 1 read, 2 modify, 4 create, 8
 * delete. */
yax_status yax_key_get_rights(const yax_key* key, unsigned char* rights);
yax_status yax_key_set_rights(yax_key* key, unsigned char rights);
/* Writes the key and all below it to a file, and puts what a file holds in their place. Both need a
 * key that is there. */
yax_status yax_key_backup(const yax_key* key, const char* file);
yax_status yax_key_restore(yax_key* key, const char* file);

/* ---- lists of names, sorted by their bytes */

/* A list of names as they were when it was made. */
typedef struct yax_names yax_names;

/* *names is the caller's, until yax_names_free. */
yax_status yax_key_children(const yax_key* key, yax_names** names); /* the keys right below */
yax_status yax_key_branch(const yax_key* key, yax_names** names);   /* all below: "a", "a/b" */
yax_status yax_key_values(const yax_key* key, yax_names** names);   /* the key's own values */
void yax_names_free(yax_names* names);                              /* null: nothing */
/* How many there are. Null: 0. */
size_t yax_names_count(const yax_names* names);
/* A name, which is the list's, and its length, unless `length` is null. Null beyond the last. */
const char* yax_names_at(const yax_names* names, size_t index, size_t* length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
