/* Of the C interface: statuses and registries. Include yax.h. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- statuses */

/* What an operation answers: one of the numbers below. */
typedef unsigned int yax_status;

/* The statuses. */
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

/* A status, or one of the component framework, in words; never null, and static. */
const char* yax_status_text(yax_status status);
/* What has failed last in the calling thread, in words: the key, the name of the value, the status
 * and what more is known: "network/eth0:mtu: the value has another type, it is a text". "" when
 * nothing has failed yet. Long paths are cut at their beginning. Functions that answer success
 * leave it as it is; so does YAX_NO_DATA of yax_watch_next. The thread's, until it calls this
 * again. */
const char* yax_failure_text(void);
/* The version of the library, "0.1.0"; static. */
const char* yax_version(void);

/* ---- the registry */

/* An open registry; yax_close ends it. */
typedef struct yax_registry yax_registry;

/* What a change survives once it was acknowledged. */
enum {
  YAX_DURABILITY_USUAL = 0,   /* as _PROCESS where that can be had, else as _NONE */
  YAX_DURABILITY_NONE = 1,    /* a process that dies in a change may leave a part of it */
  YAX_DURABILITY_PROCESS = 2, /* it leaves the change whole or not at all */
  YAX_DURABILITY_POWER = 3    /* so does a power cut, and what was acknowledged is there */
};

/* The user who has the owner's rights everywhere. */
#define YAX_ADMINISTRATOR 65535u

/* How a registry is opened. */
typedef struct yax_options {
  size_t size;           /* sizeof(yax_options), by which programs built before a field are known */
  unsigned durability;   /* one of the above; one that cannot be had is YAX_NO_SPACE */
  unsigned user;         /* the user's number, taken at its word */
  const char* user_name; /* or his name, which is hashed into a number; null: the number counts */
  unsigned read_only;    /* 1: for a program that may not write the file: every change is
                            YAX_NO_RIGHT, and nothing is made: YAX_NOT_FOUND */
  unsigned file_mode;    /* rights of a file that is made, less the umask; 0: 0644 */
  const char* side_folder;   /* a folder in memory for the file that _PROCESS keeps beside the
                                registry, the same for all programs; null: beside it */
  unsigned compact_below;    /* compacts at opening (yax_compact) when fewer slots of a kind are
                                left; 0: never */
  unsigned check_at_opening; /* 1: a damaged file (yax_check) is YAX_INVALID_FILE at once */
  unsigned wait_at_most;     /* milliseconds that a change waits for those of other processes,
                                before it is YAX_INPUT_OUTPUT; 0: a minute */
  unsigned exact_space;      /* 1: space is used as by programs with the defaults of
                                registry/Registry.h, not again: the same operations make the same
                                bytes. 0: what is free is used before the file grows */
} yax_options;

/* What null stands for in yax_open; a beginning for options of one's own. */
#define YAX_OPTIONS_USUAL \
  { sizeof(yax_options), YAX_DURABILITY_USUAL, YAX_ADMINISTRATOR, NULL, 0, 0, NULL, 0, 0, 0, 0 }

/* Opens a registry file, made when nothing is at the path. *registry is the caller's, until
 * yax_close. A process has one registry open at a time: YAX_BUSY. YAX_INVALID_FILE: what is there
 * is no registry and is left alone. */
yax_status yax_open(const char* path, const yax_options* options, yax_registry** registry);
/* Closes it; keys of it that are left answer YAX_NO_RIGHT. Null: nothing. */
void yax_close(yax_registry* registry);
/* Waits until everything that was acknowledged is on the disk. */
yax_status yax_sync(yax_registry* registry);

/* Records of a kind, and how many more there can be until YAX_LIMIT. */
typedef struct yax_room_of {
  unsigned used; /* there are so many */
  unsigned left; /* and there can be so many more */
} yax_room_of;
/* The room of a whole file. */
typedef struct yax_room {
  size_t size;         /* sizeof(yax_room), the caller's to set */
  yax_room_of strings; /* parts of the names of keys, up to 17 characters each */
  yax_room_of keys;    /* the root among them */
  yax_room_of values;  /* of all keys */
  yax_room_of blocks;  /* of 64 bytes of data each */
} yax_room;
/* Cheap. YAX_BAD_ARGUMENT: another size. */
yax_status yax_get_room(yax_registry* registry, yax_room* room);

/* What condition a file is in. */
enum {
  YAX_SOUND = 0,
  YAX_WORN = 1,    /* sound, but space is taken up by nothing: yax_compact wins it back */
  YAX_DAMAGED = 2, /* what meets the damage is YAX_INVALID_FILE; yaxreg repair saves the rest */
  YAX_LOST = 3     /* not even the root key can be read */
};
/* Looks at the whole file and changes nothing; *condition is one of the above. */
yax_status yax_check(yax_registry* registry, unsigned* condition);
/* Gives the file the same content without unused space in between, as one change; whoever has it
 * open goes on. For the administrator. YAX_INVALID_FILE: it is damaged and stays as it is; YAX_BUSY
 * in a transaction of this thread. */
yax_status yax_compact(yax_registry* registry);
/* What changes survive: one of YAX_DURABILITY_, but not _USUAL. No status. */
unsigned yax_durability(const yax_registry* registry);
/* Another user counts from now on, for all threads. */
yax_status yax_set_user(yax_registry* registry, const char* name);
yax_status yax_set_user_number(yax_registry* registry, unsigned user);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
