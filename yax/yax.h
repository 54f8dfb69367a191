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

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- statuses */

typedef unsigned int yax_status;

enum {
  YAX_OK = 0,
  YAX_NO_RIGHT = 1,      /* the user lacks the right, or the registry was closed */
  YAX_NOT_FOUND = 2,     /* no such key or value */
  YAX_INPUT_OUTPUT = 5,  /* reading or writing failed, or the file is not open any more */
  YAX_CANNOT_OPEN = 9,   /* a value cannot be read */
  YAX_NO_MEMORY = 12,    /* none left; yax_open: or the file cannot be opened or made */
  YAX_BUSY = 16,         /* this process has a registry open already */
  YAX_EXISTS = 17,       /* the key is there already */
  YAX_BAD_ARGUMENT = 22, /* a null pointer, an impossible name, path or text */
  YAX_NO_SPACE = 28,     /* the disk is full, or what was asked for cannot be had */
  YAX_RANGE = 34,        /* the stored number is outside what was asked for */
  YAX_NOT_SUPPORTED = 37,
  YAX_NO_DATA = 53,      /* the value is there, but not set; or there is no such type */
  YAX_INVALID_FILE = 59, /* no registry, or a damaged one */
  YAX_LIMIT = 75,        /* more than 1024 bytes, too little room, or the file is full for good */
  YAX_WRONG_TYPE = 79    /* the value has another type */
};

/* A status in words; never null, and static. */
const char *yax_status_text(yax_status status);
/* The version of the library, "0.1.0"; static. */
const char *yax_version(void);

/* ---- the registry */

typedef struct yax_registry yax_registry;

/* What a change survives once it was acknowledged. */
enum {
  YAX_DURABILITY_USUAL = 0,   /* as _PROCESS where that can be had, else as _NONE */
  YAX_DURABILITY_NONE = 1,    /* a process that dies in a change may leave a part of it */
  YAX_DURABILITY_PROCESS = 2, /* it leaves the change whole or not at all */
  YAX_DURABILITY_POWER = 3    /* so does a power cut, and what was acknowledged is there */
};

#define YAX_ADMINISTRATOR 65535u /* the user who has the owner's rights everywhere */

typedef struct yax_options {
  size_t size;           /* sizeof(yax_options) */
  unsigned durability;   /* one of the above; one that cannot be had is YAX_NO_SPACE */
  unsigned user;         /* the user's number, taken at its word */
  const char *user_name; /* or his name, which is hashed into a number; null: the number counts */
} yax_options;

/* What null stands for in yax_open; a beginning for options of one's own. */
#define YAX_OPTIONS_USUAL \
  { sizeof(yax_options), YAX_DURABILITY_USUAL, YAX_ADMINISTRATOR, NULL }

/* Opens a registry file, made when nothing is at the path. *registry is the caller's, until
 * yax_close. A process has one registry open at a time: YAX_BUSY. YAX_INVALID_FILE: what is there
 * is no registry and is left alone. */
yax_status yax_open(const char *path, const yax_options *options, yax_registry **registry);
/* Closes it; keys of it that are left answer YAX_NO_RIGHT. Null: nothing. */
void yax_close(yax_registry *registry);
/* Waits until everything that was acknowledged is on the disk. */
yax_status yax_sync(yax_registry *registry);
/* What changes survive: one of YAX_DURABILITY_, but not _USUAL. No status. */
unsigned yax_durability(const yax_registry *registry);
/* Another user counts from now on, for all threads. */
yax_status yax_set_user(yax_registry *registry, const char *name);
yax_status yax_set_user_number(yax_registry *registry, unsigned user);

/* ---- keys */

/* A place in the registry, where a key may be. It holds no lock and no memory of the key, and stays
 * good whatever others make and remove. */
typedef struct yax_key yax_key;

/* Names a key, by components with "/" between them; "" is the root. Nothing is looked up. *key is
 * the caller's, until yax_key_free. YAX_BAD_ARGUMENT: an empty component. */
yax_status yax_key_at(yax_registry *registry, const char *path, yax_key **key);
/* The same, from a key on. */
yax_status yax_key_below(const yax_key *key, const char *path, yax_key **below);
void yax_key_free(yax_key *key); /* null: nothing */
/* Its path from the root; the key's. No status. */
const char *yax_key_path(const yax_key *key);

/* Makes the key, and those above it. YAX_EXISTS. */
yax_status yax_key_make(yax_key *key);
/* YAX_OK or YAX_NOT_FOUND. */
yax_status yax_key_exists(const yax_key *key);
/* Removes the key with its values and all keys below it. YAX_BAD_ARGUMENT: the root. */
yax_status yax_key_remove(yax_key *key);
/* Gives the key, or a copy of it, with all below, another path from the root. The keys above it are
 * made. A moved key keeps owners and rights, a copy is the current user's. YAX_EXISTS;
 * YAX_BAD_ARGUMENT: the path lies within the key. The object goes on naming the old path. */
yax_status yax_key_move(yax_key *key, const char *path);
yax_status yax_key_copy(const yax_key *key, const char *path);
/* A number that belongs to the key itself. YAX_NO_DATA: none is set. */
yax_status yax_key_get_default(const yax_key *key, uint64_t *number);
yax_status yax_key_set_default(yax_key *key, uint64_t number);
/* The owner's rights in the low four bits, everybody else's above: 1 read, 2 modify, 4 create, 8
 * delete. */
yax_status yax_key_get_rights(const yax_key *key, unsigned char *rights);
yax_status yax_key_set_rights(yax_key *key, unsigned char rights);
/* Writes the key and all below it to a file, and puts what a file holds in their place. */
yax_status yax_key_backup(const yax_key *key, const char *file);
yax_status yax_key_restore(yax_key *key, const char *file);

/* ---- lists of names, sorted by their bytes */

typedef struct yax_names yax_names;

/* *names is the caller's, until yax_names_free. */
yax_status yax_key_children(const yax_key *key, yax_names **names); /* the keys right below */
yax_status yax_key_branch(const yax_key *key, yax_names **names);   /* all below: "a", "a/b" */
yax_status yax_key_values(const yax_key *key, yax_names **names);   /* the key's own values */
void yax_names_free(yax_names *names); /* null: nothing */
size_t yax_names_count(const yax_names *names);
/* A name, which is the list's, and its length, unless `length` is null. Null beyond the last. */
const char *yax_names_at(const yax_names *names, size_t index, size_t *length);

/* ---- values
 *
 * A value has a name of 1 to 31 bytes, and a type:
 *
 *   YAX_INTEGER  64 bits, two's complement; also for truth values, 0 and 1, and enumerations
 *   YAX_TEXT     at most 1023 bytes without a zero byte; one is stored behind them
 *   YAX_BYTES    at most 1024 bytes
 *   YAX_REAL     a text of decimal digits that reads back as the same number, "21.5"
 *   4, 5         bytes of one's own
 *
 * yaxreg shows and takes the same: --int, --string, --hex, and --string with --type 3.
 *
 * Setting creates a value or replaces one of whatever type, and makes the key and those above it
 * when they are missing: in one change, which is there whole or not at all. An equal value is not
 * written again. YAX_LIMIT: too long. Getting tells another type: YAX_WRONG_TYPE. */

enum { YAX_INTEGER = 0, YAX_TEXT = 1, YAX_BYTES = 2, YAX_REAL = 3 };

#define YAX_DATA_MAX 1024u         /* bytes of a value */
#define YAX_NAME_MAX 31u           /* bytes of its name */
#define YAX_ZERO_ENDED ((size_t)-1) /* a length: the text ends with a zero byte */

yax_status yax_set_int(yax_key *key, const char *name, int64_t number);
yax_status yax_set_uint(yax_key *key, const char *name, uint64_t number);
yax_status yax_set_real(yax_key *key, const char *name, double number);
/* `length` bytes of a text, or YAX_ZERO_ENDED. YAX_BAD_ARGUMENT: a zero byte is in it. */
yax_status yax_set_text(yax_key *key, const char *name, const char *text, size_t length);
yax_status yax_set_bytes(yax_key *key, const char *name, const void *data, size_t size);
/* Bytes of a type from 1 to 5, as they are. */
yax_status yax_set_data(yax_key *key, const char *name, unsigned type, const void *data,
                        size_t size);

/* Which of the two a number was set by is not stored: from 2^63 on, one is read as a negative
 * number by yax_get_int, and a negative one as that by yax_get_uint. */
yax_status yax_get_int(const yax_key *key, const char *name, int64_t *number);
yax_status yax_get_uint(const yax_key *key, const char *name, uint64_t *number);
yax_status yax_get_real(const yax_key *key, const char *name, double *number);
/* A text with a zero byte behind it, into `room` bytes, and its length, unless `length` is null.
 * YAX_LIMIT: too little room; *length is then the text's all the same. YAX_DATA_MAX + 1 is always
 * enough. */
yax_status yax_get_text(const yax_key *key, const char *name, char *text, size_t room,
                        size_t *length);
/* The same with bytes, of type YAX_BYTES; YAX_DATA_MAX is always enough. */
yax_status yax_get_bytes(const yax_key *key, const char *name, void *data, size_t room,
                         size_t *size);
/* The bytes of a value of whatever type, as they are stored; `type` may be null. */
yax_status yax_get_data(const yax_key *key, const char *name, unsigned *type, void *data,
                        size_t room, size_t *size);
/* YAX_OK, YAX_NOT_FOUND, or YAX_NO_DATA for one that is not set; `type` may be null. */
yax_status yax_value_exists(const yax_key *key, const char *name, unsigned *type);
yax_status yax_remove_value(yax_key *key, const char *name);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
