/* Of the C interface: values. Include yax.h.
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
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "yax/yax_keys.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The types of values. */
enum { YAX_INTEGER = 0, YAX_TEXT = 1, YAX_BYTES = 2, YAX_REAL = 3 };

/* The bytes of a value, at most. */
#define YAX_DATA_MAX 1024u
/* The bytes of its name, at most. */
#define YAX_NAME_MAX 31u
/* A length: the text ends with a zero byte. */
#define YAX_ZERO_ENDED ((size_t)-1)

/* Sets a value to a number. */
yax_status yax_set_int(yax_key* key, const char* name, int64_t number);
yax_status yax_set_uint(yax_key* key, const char* name, uint64_t number);
yax_status yax_set_real(yax_key* key, const char* name, double number);
/* `length` bytes of a text, or YAX_ZERO_ENDED. YAX_BAD_ARGUMENT: a zero byte is in it. */
yax_status yax_set_text(yax_key* key, const char* name, const char* text, size_t length);
/* `size` bytes, which may be none. */
yax_status yax_set_bytes(yax_key* key, const char* name, const void* data, size_t size);
/* Bytes of a type from 1 to 5, as they are. */
yax_status yax_set_data(yax_key* key, const char* name, unsigned type, const void* data,
                        size_t size);

/* Which of the two a number was set by is not stored: from 2^63 on, one is read as a negative
 * number by yax_get_int, and a negative one as that by yax_get_uint. */
yax_status yax_get_int(const yax_key* key, const char* name, int64_t* number);
yax_status yax_get_uint(const yax_key* key, const char* name, uint64_t* number);
yax_status yax_get_real(const yax_key* key, const char* name, double* number);
/* A text with a zero byte behind it, into `room` bytes, and its length, unless `length` is null.
 * YAX_LIMIT: too little room; *length is then the text's all the same. YAX_DATA_MAX + 1 is always
 * enough. */
yax_status yax_get_text(const yax_key* key, const char* name, char* text, size_t room,
                        size_t* length);
/* The same with bytes, of type YAX_BYTES; YAX_DATA_MAX is always enough. */
yax_status yax_get_bytes(const yax_key* key, const char* name, void* data, size_t room,
                         size_t* size);
/* The bytes of a value of whatever type, as they are stored; `type` may be null. */
yax_status yax_get_data(const yax_key* key, const char* name, unsigned* type, void* data,
                        size_t room, size_t* size);
/* YAX_OK, YAX_NOT_FOUND, or YAX_NO_DATA for one that is not set; `type` may be null. */
yax_status yax_value_exists(const yax_key* key, const char* name, unsigned* type);
/* Deletes a value. YAX_NOT_FOUND: there is none. */
yax_status yax_remove_value(yax_key* key, const char* name);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
