/* The C interface as a C99 program sees it. Runs in a folder of its own, which the first argument
 * names; prints what does not hold and ends with how much that was. */
#include "yax/yax.h"

#include <pthread.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;
static char file[4096];

#define CHECK(condition)                                                             \
  do {                                                                               \
    if (!(condition)) {                                                              \
      ++failures;                                                                    \
      fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
    }                                                                                \
  } while (0)

#define CHECK_STATUS(expected, call)                                                         \
  do {                                                                                       \
    const yax_status got = (call);                                                           \
    if (got != (expected)) {                                                                 \
      ++failures;                                                                            \
      fprintf(stderr, "%s:%d: %s is %u (%s), not %s\n", __FILE__, __LINE__, #call, got,      \
              yax_status_text(got), #expected);                                              \
    }                                                                                        \
  } while (0)

static yax_registry *OpenNew(void) {
  yax_registry *registry = NULL;
  remove(file);
  CHECK_STATUS(YAX_OK, yax_open(file, NULL, &registry));
  return registry;
}

static yax_key *KeyAt(yax_registry *registry, const char *path) {
  yax_key *key = NULL;
  CHECK_STATUS(YAX_OK, yax_key_at(registry, path, &key));
  return key;
}

/* The names of a list, with blanks between them; frees it. */
static const char *Joined(yax_names *names) {
  static char text[4096];
  size_t i;
  text[0] = 0;
  for (i = 0; i < yax_names_count(names); ++i) {
    size_t length = 0;
    const char *name = yax_names_at(names, i, &length);
    CHECK(name != NULL && strlen(name) == length);
    if (i != 0) strcat(text, " ");
    strcat(text, name);
  }
  CHECK(yax_names_at(names, i, NULL) == NULL);
  yax_names_free(names);
  return text;
}

static const char *Children(const yax_key *key) {
  yax_names *names = NULL;
  CHECK_STATUS(YAX_OK, yax_key_children(key, &names));
  return Joined(names);
}

static const char *Branch(const yax_key *key) {
  yax_names *names = NULL;
  CHECK_STATUS(YAX_OK, yax_key_branch(key, &names));
  return Joined(names);
}

static const char *Values(const yax_key *key) {
  yax_names *names = NULL;
  CHECK_STATUS(YAX_OK, yax_key_values(key, &names));
  return Joined(names);
}

static void IntegersAreKeptWhole(void) {
  static const int64_t kNumbers[] = {0, 1, -1, 1500, INT64_MAX, INT64_MIN, -4294967297};
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "network/eth0");
  size_t i;
  int64_t number = 42;
  uint64_t positive = 42;
  for (i = 0; i < sizeof kNumbers / sizeof *kNumbers; ++i) {
    CHECK_STATUS(YAX_OK, yax_set_int(key, "n", kNumbers[i]));
    CHECK_STATUS(YAX_OK, yax_get_int(key, "n", &number));
    CHECK(number == kNumbers[i]);
  }
  CHECK_STATUS(YAX_OK, yax_set_uint(key, "n", UINT64_MAX));
  CHECK_STATUS(YAX_OK, yax_get_uint(key, "n", &positive));
  CHECK(positive == UINT64_MAX);
  CHECK_STATUS(YAX_NOT_FOUND, yax_get_int(key, "other", &number));
  CHECK(number == kNumbers[i - 1]);
  yax_key_free(key);
  yax_close(registry);
}

static void RealsReadBackAsTheSameNumber(void) {
  static const double kNumbers[] = {0.0,     -0.0,     21.5,     0.1,     1.0 / 3, 1e300, 5e-324,
                                    1e15 + 1, 123456.0, -2.5e-10, 1.7976931348623157e308};
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "sensor");
  char text[64];
  size_t size = 0;
  unsigned type = 0;
  size_t i;
  double number = 42;
  for (i = 0; i < sizeof kNumbers / sizeof *kNumbers; ++i) {
    CHECK_STATUS(YAX_OK, yax_set_real(key, "r", kNumbers[i]));
    CHECK_STATUS(YAX_OK, yax_get_real(key, "r", &number));
    CHECK(memcmp(&number, &kNumbers[i], sizeof number) == 0);
  }
  CHECK_STATUS(YAX_OK, yax_set_real(key, "r", 21.5));
  CHECK_STATUS(YAX_OK, yax_get_data(key, "r", &type, text, sizeof text, &size));
  CHECK(type == YAX_REAL && size == 5 && strcmp(text, "21.5") == 0);
  CHECK_STATUS(YAX_OK, yax_set_data(key, "r", YAX_REAL, "-7", 3));
  CHECK_STATUS(YAX_OK, yax_get_real(key, "r", &number));
  CHECK(number == -7);
  CHECK_STATUS(YAX_OK, yax_set_data(key, "r", YAX_REAL, "7 m", 4));
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_real(key, "r", &number));
  CHECK_STATUS(YAX_OK, yax_set_data(key, "r", YAX_REAL, "7", 1)); /* without its end */
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_real(key, "r", &number));
  CHECK(number == -7);
  yax_key_free(key);
  yax_close(registry);
}

static void TextsHaveALength(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "a");
  char text[YAX_DATA_MAX + 1];
  char large[YAX_DATA_MAX];
  size_t length = 0;
  CHECK_STATUS(YAX_OK, yax_set_text(key, "t", "uplink", YAX_ZERO_ENDED));
  CHECK_STATUS(YAX_OK, yax_get_text(key, "t", text, sizeof text, &length));
  CHECK(length == 6 && strcmp(text, "uplink") == 0);
  CHECK_STATUS(YAX_OK, yax_set_text(key, "t", "uplink", 2));
  CHECK_STATUS(YAX_OK, yax_get_text(key, "t", text, 3, &length));
  CHECK(length == 2 && strcmp(text, "up") == 0);
  strcpy(text, "--");
  length = 0;
  CHECK_STATUS(YAX_LIMIT, yax_get_text(key, "t", text, 2, &length));
  CHECK(length == 2 && strcmp(text, "--") == 0);
  CHECK_STATUS(YAX_OK, yax_set_text(key, "t", "", 0));
  CHECK_STATUS(YAX_OK, yax_get_text(key, "t", text, 1, &length));
  CHECK(length == 0 && text[0] == 0);
  CHECK_STATUS(YAX_OK, yax_get_data(key, "t", NULL, text, sizeof text, &length));
  CHECK(length == 1 && text[0] == 0);
  memset(large, 'x', sizeof large);
  CHECK_STATUS(YAX_OK, yax_set_text(key, "t", large, 1023));
  CHECK_STATUS(YAX_OK, yax_get_text(key, "t", text, sizeof text, NULL));
  CHECK(strlen(text) == 1023);
  CHECK_STATUS(YAX_LIMIT, yax_set_text(key, "t", large, 1024));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_text(key, "t", "a\0b", 3));
  CHECK_STATUS(YAX_OK, yax_set_data(key, "t", YAX_TEXT, "raw", 3)); /* without its end */
  CHECK_STATUS(YAX_OK, yax_get_text(key, "t", text, sizeof text, &length));
  CHECK(length == 3 && strcmp(text, "raw") == 0);
  yax_key_free(key);
  yax_close(registry);
}

static void BytesAreKeptAsTheyAre(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "");
  unsigned char data[YAX_DATA_MAX + 1];
  unsigned char read[YAX_DATA_MAX];
  size_t size = 9;
  unsigned type = 9;
  memset(data, 0xA5, sizeof data);
  CHECK_STATUS(YAX_OK, yax_set_bytes(key, "b", data, YAX_DATA_MAX));
  CHECK_STATUS(YAX_OK, yax_get_bytes(key, "b", read, sizeof read, &size));
  CHECK(size == YAX_DATA_MAX && memcmp(read, data, size) == 0);
  CHECK_STATUS(YAX_LIMIT, yax_get_bytes(key, "b", read, 1023, &size));
  CHECK_STATUS(YAX_LIMIT, yax_set_bytes(key, "b", data, YAX_DATA_MAX + 1));
  CHECK_STATUS(YAX_OK, yax_set_bytes(key, "b", NULL, 0));
  CHECK_STATUS(YAX_OK, yax_get_bytes(key, "b", read, 0, &size));
  CHECK(size == 0);
  CHECK_STATUS(YAX_OK, yax_set_data(key, "own", 5, data, 3));
  CHECK_STATUS(YAX_OK, yax_get_data(key, "own", &type, read, sizeof read, &size));
  CHECK(type == 5 && size == 3);
  CHECK_STATUS(YAX_NO_DATA, yax_set_data(key, "own", 6, data, 3));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_data(key, "own", YAX_INTEGER, data, 8));
  yax_key_free(key);
  yax_close(registry);
}

static void AnotherTypeIsTold(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  char text[8];
  int64_t number = 0;
  double real = 0;
  unsigned type = 9;
  CHECK_STATUS(YAX_OK, yax_set_int(key, "v", 1));
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_text(key, "v", text, sizeof text, NULL));
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_bytes(key, "v", text, sizeof text, NULL));
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_real(key, "v", &real));
  CHECK_STATUS(YAX_OK, yax_set_text(key, "v", "1", 1)); /* replaces it */
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_int(key, "v", &number));
  CHECK_STATUS(YAX_OK, yax_value_exists(key, "v", &type));
  CHECK(type == YAX_TEXT);
  CHECK(strcmp(Values(key), "v") == 0);
  yax_key_free(key);
  yax_close(registry);
}

static void KeysAreExactlyThoseToldOf(void) {
  static const char *kNames[] = {"main", "max", "temperature", "tempo", "network", "net"};
  yax_registry *registry = OpenNew();
  yax_key *root = KeyAt(registry, "");
  size_t i;
  for (i = 0; i < sizeof kNames / sizeof *kNames; ++i) {
    yax_key *key = KeyAt(registry, kNames[i]);
    CHECK_STATUS(YAX_NOT_FOUND, yax_key_exists(key));
    CHECK_STATUS(YAX_OK, yax_key_make(key));
    CHECK_STATUS(YAX_EXISTS, yax_key_make(key));
    CHECK_STATUS(YAX_OK, yax_key_exists(key));
    yax_key_free(key);
  }
  CHECK(strcmp(Children(root), "main max net network temperature tempo") == 0);
  yax_key_free(root);
  yax_close(registry);
}

static void KeysAreNamedFromEachOther(void) {
  yax_registry *registry = OpenNew();
  yax_key *root = KeyAt(registry, "/");
  yax_key *net = NULL;
  yax_key *eth = NULL;
  yax_key *bad = NULL;
  CHECK_STATUS(YAX_OK, yax_key_below(root, "net", &net));
  CHECK_STATUS(YAX_OK, yax_key_below(net, "eth/0", &eth));
  CHECK(strcmp(yax_key_path(eth), "net/eth/0") == 0);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_below(net, "a//b", &bad));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_at(registry, "a/", &bad));
  CHECK(bad == NULL);
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_exists(eth));
  CHECK_STATUS(YAX_OK, yax_set_int(eth, "mtu", 1500)); /* makes it */
  CHECK(strcmp(Children(root), "net") == 0);
  CHECK(strcmp(Branch(root), "net net/eth net/eth/0") == 0);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_remove(root));
  CHECK_STATUS(YAX_OK, yax_key_remove(net));
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_remove(net));
  CHECK(strcmp(Branch(root), "") == 0);
  yax_key_free(eth);
  yax_key_free(net);
  yax_key_free(root);
  yax_close(registry);
}

static void ListsAreSortedAndMayBeEmpty(void) {
  static const char *kNames[] = {"m", "\xC3\xA9", "f", "t", "mn", "B", "a"};
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  size_t i;
  yax_names *names = NULL;
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_values(key, &names));
  CHECK_STATUS(YAX_OK, yax_key_make(key));
  CHECK(strcmp(Values(key), "") == 0);
  CHECK(strcmp(Children(key), "") == 0);
  for (i = 0; i < sizeof kNames / sizeof *kNames; ++i) {
    yax_key *below = NULL;
    CHECK_STATUS(YAX_OK, yax_set_int(key, kNames[i], 1));
    CHECK_STATUS(YAX_OK, yax_key_below(key, kNames[i], &below));
    CHECK_STATUS(YAX_OK, yax_key_make(below));
    yax_key_free(below);
  }
  CHECK(strcmp(Values(key), "B a f m mn t \xC3\xA9") == 0);
  CHECK(strcmp(Children(key), "B a f m mn t \xC3\xA9") == 0);
  CHECK_STATUS(YAX_OK, yax_remove_value(key, "f"));
  CHECK_STATUS(YAX_NOT_FOUND, yax_remove_value(key, "f"));
  CHECK(strcmp(Values(key), "B a m mn t \xC3\xA9") == 0);
  yax_key_free(key);
  yax_close(registry);
}

static void BranchesAreCopiedAndMoved(void) {
  yax_registry *registry = OpenNew();
  yax_key *from = KeyAt(registry, "defaults/net");
  yax_key *to = KeyAt(registry, "net");
  int64_t number = 0;
  uint64_t given = 0;
  CHECK_STATUS(YAX_OK, yax_set_int(from, "mtu", 1500));
  CHECK_STATUS(YAX_NO_DATA, yax_key_get_default(from, &given));
  CHECK_STATUS(YAX_OK, yax_key_set_default(from, UINT64_MAX));
  CHECK_STATUS(YAX_OK, yax_key_copy(from, "net"));
  CHECK_STATUS(YAX_EXISTS, yax_key_copy(from, "net"));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_copy(from, "defaults/net/below"));
  CHECK_STATUS(YAX_OK, yax_get_int(to, "mtu", &number));
  CHECK_STATUS(YAX_OK, yax_key_get_default(to, &given));
  CHECK(number == 1500 && given == UINT64_MAX);
  CHECK_STATUS(YAX_OK, yax_key_move(to, "old/net"));
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_exists(to));
  CHECK_STATUS(YAX_OK, yax_key_exists(from));
  yax_key_free(from);
  yax_key_free(to);
  yax_close(registry);
}

static void BackupsComeBack(void) {
  char backup[4200];
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  int64_t number = 0;
  sprintf(backup, "%s.backup", file);
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 1));
  CHECK_STATUS(YAX_OK, yax_key_backup(key, backup));
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 2));
  CHECK_STATUS(YAX_OK, yax_key_restore(key, backup));
  CHECK_STATUS(YAX_OK, yax_get_int(key, "n", &number));
  CHECK(number == 1);
  CHECK_STATUS(YAX_INPUT_OUTPUT, yax_key_restore(key, "missing"));
  remove(backup);
  yax_key_free(key);
  yax_close(registry);
}

static void RightsCount(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  unsigned char rights = 0;
  int64_t number = 0;
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 1));
  CHECK_STATUS(YAX_OK, yax_key_get_rights(key, &rights));
  CHECK(rights == 0x0F);
  CHECK_STATUS(YAX_OK, yax_set_user(registry, "guest"));
  CHECK_STATUS(YAX_NO_RIGHT, yax_get_int(key, "n", &number));
  CHECK_STATUS(YAX_NO_RIGHT, yax_set_int(key, "n", 2));
  CHECK_STATUS(YAX_NO_RIGHT, yax_key_set_rights(key, 0xFF));
  CHECK_STATUS(YAX_OK, yax_set_user_number(registry, YAX_ADMINISTRATOR));
  CHECK_STATUS(YAX_OK, yax_key_set_rights(key, 0x1F));
  CHECK_STATUS(YAX_OK, yax_set_user(registry, "guest"));
  CHECK_STATUS(YAX_OK, yax_get_int(key, "n", &number));
  yax_key_free(key);
  yax_close(registry);
}

static void WhatIsAskedForIsHad(void) {
  yax_options options = YAX_OPTIONS_USUAL;
  yax_registry *registry = NULL;
  unsigned durability;
  remove(file);
  for (durability = YAX_DURABILITY_NONE; durability <= YAX_DURABILITY_POWER; ++durability) {
    yax_status status;
    options.durability = durability;
    status = yax_open(file, &options, &registry);
    if (status == YAX_NO_SPACE && durability == YAX_DURABILITY_PROCESS) continue; /* no mappings */
    CHECK_STATUS(YAX_OK, status);
    CHECK(yax_durability(registry) == durability);
    CHECK_STATUS(YAX_OK, yax_sync(registry));
    yax_close(registry);
  }
  registry = NULL;
  options.durability = 4;
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_open(file, &options, &registry));
  options.durability = YAX_DURABILITY_USUAL;
  options.size = 1;
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_open(file, &options, &registry));
  options.size = sizeof options + 1;
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_open(file, &options, &registry));
  CHECK(registry == NULL);
  /* A program that was built when there were no more fields than these. */
  options.size = offsetof(yax_options, side_folder);
  options.side_folder = "nowhere/at/all";
  CHECK_STATUS(YAX_OK, yax_open(file, &options, &registry));
  yax_close(registry);
}

static void OneRegistryIsOpenAtATime(void) {
  yax_registry *first = OpenNew();
  yax_registry *second = NULL;
  yax_key *key = KeyAt(first, "k");
  CHECK_STATUS(YAX_BUSY, yax_open(file, NULL, &second));
  CHECK_STATUS(YAX_BUSY, yax_open("another.rce", NULL, &second));
  CHECK(second == NULL);
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 1)); /* it goes on working */
  yax_close(first);
  CHECK_STATUS(YAX_NO_RIGHT, yax_set_int(key, "n", 2));
  CHECK_STATUS(YAX_OK, yax_open(file, NULL, &second));
  CHECK_STATUS(YAX_NO_RIGHT, yax_key_exists(key)); /* it is a key of the first */
  yax_close(second);
  yax_key_free(key);
}

static void WhatIsNoRegistryIsLeftAlone(void) {
  yax_registry *registry = NULL;
  FILE *other = fopen(file, "w");
  CHECK(other != NULL && fputs("something else", other) >= 0 && fclose(other) == 0);
  CHECK_STATUS(YAX_INVALID_FILE, yax_open(file, NULL, &registry));
  CHECK_STATUS(YAX_NO_MEMORY, yax_open("/no/such/folder/a.rce", NULL, &registry));
  CHECK(registry == NULL);
}

static void AFileIsLookedAfter(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  yax_room room;
  unsigned condition = YAX_LOST;
  room.size = sizeof room;
  CHECK_STATUS(YAX_OK, yax_set_bytes(key, "v", "1234", 4));
  CHECK_STATUS(YAX_OK, yax_get_room(registry, &room));
  CHECK(room.keys.used == 2 && room.keys.left == 10342);
  CHECK(room.strings.used == 2 && room.strings.left == 10342);
  CHECK(room.values.used == 1 && room.values.left == 10343);
  CHECK(room.blocks.used == 1 && room.blocks.left == 10343);
  CHECK_STATUS(YAX_OK, yax_check(registry, &condition));
  CHECK(condition == YAX_SOUND);
  CHECK_STATUS(YAX_OK, yax_compact(registry));
  CHECK_STATUS(YAX_OK, yax_get_room(registry, &room));
  CHECK(room.values.used == 1);
  room.size = 1;
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_room(registry, &room));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_room(registry, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_room(NULL, &room));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_check(registry, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_check(NULL, &condition));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_compact(NULL));
  CHECK_STATUS(YAX_OK, yax_set_user(registry, "guest"));
  CHECK_STATUS(YAX_NO_RIGHT, yax_compact(registry));
  yax_key_free(key);
  yax_close(registry);
}

static void NullPointersAreRefused(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  yax_names *names = NULL;
  int64_t number = 0;
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_open(NULL, NULL, &registry));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_open(file, NULL, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_sync(NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_user(registry, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_at(NULL, "k", &key));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_at(registry, NULL, &key));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_at(registry, "k", NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_below(NULL, "k", &key));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_below(key, NULL, &key));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_below(key, "k", NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_user(NULL, "user"));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_user_number(NULL, 1));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_make(NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_exists(NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_remove(NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_move(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_copy(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_get_default(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_get_rights(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_backup(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_restore(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_children(NULL, &names));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_values(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_int(NULL, "n", 1));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_int(key, NULL, 1));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_int(key, "", 1));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_text(key, "n", NULL, 0));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_set_bytes(key, "n", NULL, 1));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_int(key, "n", NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_int(key, NULL, &number));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_real(key, "n", NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_text(key, "n", NULL, 9, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_value_exists(key, NULL, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_remove_value(key, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_remove_value(NULL, "n"));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_data(NULL, "n", NULL, &number, sizeof number, NULL));
  CHECK_STATUS(YAX_NOT_FOUND, yax_get_data(key, "n", NULL, &number, sizeof number, NULL));
  CHECK(yax_names_count(NULL) == 0 && yax_names_at(NULL, 0, NULL) == NULL);
  CHECK(strcmp(yax_key_path(NULL), "") == 0);
  CHECK(yax_durability(NULL) == YAX_DURABILITY_NONE);
  yax_names_free(NULL);
  yax_key_free(NULL);
  yax_close(NULL);
  yax_key_free(key);
  yax_close(registry);
}

static void ATransactionHappensWholeOrNotAtAll(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "k");
  yax_key *other = KeyAt(registry, "other/key");
  yax_transaction *transaction = NULL;
  int64_t number = 0;
  CHECK_STATUS(YAX_OK, yax_begin(registry, &transaction));
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 1));
  CHECK_STATUS(YAX_OK, yax_set_int(other, "n", 2));
  CHECK_STATUS(YAX_OK, yax_get_int(key, "n", &number));
  CHECK(number == 1);
  yax_cancel(transaction);
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_exists(key));
  CHECK_STATUS(YAX_NOT_FOUND, yax_key_exists(other));
  CHECK_STATUS(YAX_OK, yax_begin(registry, &transaction));
  CHECK_STATUS(YAX_OK, yax_set_int(key, "n", 3));
  CHECK_STATUS(YAX_OK, yax_commit(transaction));
  CHECK_STATUS(YAX_OK, yax_get_int(key, "n", &number));
  CHECK(number == 3);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_begin(NULL, &transaction));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_begin(registry, NULL));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_commit(NULL));
  yax_cancel(NULL);
  yax_key_free(other);
  yax_key_free(key);
  yax_close(registry);
}

static void ChangesAreTold(void) {
  yax_registry *registry = OpenNew();
  yax_key *net = KeyAt(registry, "net");
  yax_watch *watch = NULL;
  yax_change change = {99, NULL, NULL};
  CHECK_STATUS(YAX_OK, yax_watch_key(net, &watch));
  CHECK_STATUS(YAX_NO_DATA, yax_watch_next(watch, 0, &change));
  CHECK(change.kind == 99);
  CHECK(yax_change_descriptor(registry) >= 0);
  CHECK_STATUS(YAX_OK, yax_set_int(net, "mtu", 1500));
  CHECK_STATUS(YAX_OK, yax_watch_next(watch, YAX_FOREVER, &change));
  CHECK(change.kind == YAX_KEY_CREATED && strcmp(change.path, "net") == 0);
  CHECK(strcmp(change.name, "") == 0);
  CHECK_STATUS(YAX_OK, yax_watch_next(watch, 60000, &change));
  CHECK(change.kind == YAX_VALUE_CREATED && strcmp(change.name, "mtu") == 0);
  CHECK_STATUS(YAX_NO_DATA, yax_watch_next(watch, 1, &change));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_watch_next(watch, 0, NULL));
  yax_close(registry);
  CHECK_STATUS(YAX_NO_RIGHT, yax_watch_next(watch, 0, &change));
  yax_watch_free(watch);
  watch = NULL;
  CHECK_STATUS(YAX_NO_RIGHT, yax_watch_key(net, &watch));
  CHECK(watch == NULL);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_watch_key(NULL, &watch));
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_watch_key(net, NULL));
  yax_key_free(net);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_watch_next(NULL, 0, &change));
  CHECK(yax_change_descriptor(NULL) == -1);
  yax_watch_free(NULL);
}

static void *MakeKeysOfItsOwn(void *argument) {
  yax_key *key = argument;
  int64_t i;
  for (i = 0; i < 100; ++i) {
    char name[32];
    int64_t number = 0;
    yax_key *below = NULL;
    yax_status status;
    sprintf(name, "k%d", (int)(i % 12));
    status = yax_key_below(key, name, &below);
    if (status == YAX_OK) status = yax_set_int(below, "n", i);
    if (status == YAX_OK) status = yax_get_int(below, "n", &number);
    if (status == YAX_OK && i % 5 == 0) status = yax_key_remove(below);
    yax_key_free(below);
    if (status != YAX_OK || number != i) return "failed";
  }
  return NULL;
}

static void ThreadsUseItAtOnce(void) {
  yax_registry *registry = OpenNew();
  yax_key *keys[4];
  pthread_t threads[4];
  int i;
  for (i = 0; i < 4; ++i) {
    char path[16];
    sprintf(path, "thread%.*s", i, "aaa"); /* names that begin alike */
    keys[i] = KeyAt(registry, path);
    CHECK(pthread_create(&threads[i], NULL, MakeKeysOfItsOwn, keys[i]) == 0);
  }
  for (i = 0; i < 4; ++i) {
    void *result = NULL;
    CHECK(pthread_join(threads[i], &result) == 0 && result == NULL);
    yax_key_free(keys[i]);
  }
  yax_close(registry);
}

static void TheLastFailureIsTold(void) {
  yax_registry *registry = OpenNew();
  yax_key *key = KeyAt(registry, "network/eth0");
  yax_key *none = NULL;
  char text[8];
  int64_t number = 0;
  CHECK_STATUS(YAX_OK, yax_set_text(key, "name", "uplink", YAX_ZERO_ENDED));
  CHECK_STATUS(YAX_WRONG_TYPE, yax_get_int(key, "name", &number));
  CHECK(strcmp(yax_failure_text(), "network/eth0:name: the value has another type, it is a text") ==
        0);
  CHECK_STATUS(YAX_LIMIT, yax_get_text(key, "name", text, 6, NULL));
  CHECK(strstr(yax_failure_text(), "the room for it is too small") != NULL);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_int(key, "name", NULL));
  CHECK(strstr(yax_failure_text(), "network/eth0:name: ") == yax_failure_text());
  CHECK(strstr(yax_failure_text(), "a null pointer") != NULL);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_key_at(NULL, "a", &none));
  CHECK(strstr(yax_failure_text(), "the registry is not open") != NULL);
  CHECK_STATUS(YAX_BAD_ARGUMENT, yax_get_int(none, NULL, &number));
  CHECK(yax_failure_text()[0] != 0);
  yax_key_free(key);
  yax_close(registry);
}

static void StatusesHaveWords(void) {
  CHECK(strcmp(yax_status_text(YAX_OK), "success") == 0);
  CHECK(strcmp(yax_status_text(YAX_WRONG_TYPE), "the value has another type") == 0);
  CHECK(strlen(yax_status_text(4711)) > 0);
  CHECK(strchr(yax_version(), '.') != NULL);
}

int main(int count, char **arguments) {
  if (count != 2) return 2;
  sprintf(file, "%.4000s/c-interface.rce", arguments[1]);
  IntegersAreKeptWhole();
  RealsReadBackAsTheSameNumber();
  TextsHaveALength();
  BytesAreKeptAsTheyAre();
  AnotherTypeIsTold();
  KeysAreExactlyThoseToldOf();
  KeysAreNamedFromEachOther();
  ListsAreSortedAndMayBeEmpty();
  BranchesAreCopiedAndMoved();
  BackupsComeBack();
  RightsCount();
  WhatIsAskedForIsHad();
  OneRegistryIsOpenAtATime();
  WhatIsNoRegistryIsLeftAlone();
  AFileIsLookedAfter();
  NullPointersAreRefused();
  ATransactionHappensWholeOrNotAtAll();
  ChangesAreTold();
  ThreadsUseItAtOnce();
  TheLastFailureIsTold();
  StatusesHaveWords();
  remove(file);
  return failures == 0 ? 0 : 1;
}
