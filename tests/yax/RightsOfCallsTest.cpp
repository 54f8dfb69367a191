// Every function of the C interface that concerns a key, by its owner, another user and the
// administrator, with each permission byte.
#include "tests/platform/TestFiles.h"
#include "tests/support/RightsRule.h"
#include "yax/yax.h"

namespace yax {
namespace {

using namespace rights_rule;

struct RightsCall {
  const char* name;
  unsigned int need;
  yax_status (*run)(yax_key* key, const std::string& folder);
};

// By reference: the call that makes the names may come after the argument has been taken.
yax_status FreeNames(yax_status status, yax_names*& names) {
  yax_names_free(names);
  return status;
}

// On a key with a text "t", a number "n", real "r" and a default value. On "open" everybody has all
// rights.
const RightsCall kRightsCalls[] = {
    {"exists", kNothing, [](yax_key* key, const std::string&) { return yax_key_exists(key); }},
    {"make below", kCreateTwice,
     [](yax_key* key, const std::string&) {
       yax_key* below = nullptr;
       yax_status status = yax_key_below(key, "new/below", &below);
       if (status == YAX_OK) status = yax_key_make(below);
       yax_key_free(below);
       return status;
     }},
    {"remove", kDelete, [](yax_key* key, const std::string&) { return yax_key_remove(key); }},
    {"move", kDelete,
     [](yax_key* key, const std::string&) { return yax_key_move(key, "open/moved"); }},
    {"copy", kRead,
     [](yax_key* key, const std::string&) { return yax_key_copy(key, "open/copy"); }},
    {"get default", kRead,
     [](yax_key* key, const std::string&) {
       uint64_t number = 0;
       return yax_key_get_default(key, &number);
     }},
    {"set default", kModify,
     [](yax_key* key, const std::string&) { return yax_key_set_default(key, 8); }},
    {"get rights", kNothing,
     [](yax_key* key, const std::string&) {
       unsigned char rights = 0;
       return yax_key_get_rights(key, &rights);
     }},
    {"set rights", kToOwn,
     [](yax_key* key, const std::string&) { return yax_key_set_rights(key, 0x11); }},
    {"backup", kRead,
     [](yax_key* key, const std::string& folder) {
       return yax_key_backup(key, (folder + "/made").c_str());
     }},
    {"restore", kCreate,
     [](yax_key* key, const std::string& folder) {
       return yax_key_restore(key, (folder + "/backup").c_str());
     }},
    {"children", kRead,
     [](yax_key* key, const std::string&) {
       yax_names* names = nullptr;
       return FreeNames(yax_key_children(key, &names), names);
     }},
    {"branch", kRead,
     [](yax_key* key, const std::string&) {
       yax_names* names = nullptr;
       return FreeNames(yax_key_branch(key, &names), names);
     }},
    {"values", kRead,
     [](yax_key* key, const std::string&) {
       yax_names* names = nullptr;
       return FreeNames(yax_key_values(key, &names), names);
     }},
    {"set a new number", kCreate,
     [](yax_key* key, const std::string&) { return yax_set_int(key, "new", 1); }},
    {"set int", kModify, [](yax_key* key, const std::string&) { return yax_set_int(key, "n", 1); }},
    {"set uint", kModify,
     [](yax_key* key, const std::string&) { return yax_set_uint(key, "n", 1); }},
    {"set real", kModify,
     [](yax_key* key, const std::string&) { return yax_set_real(key, "r", 1); }},
    {"set text", kModify,
     [](yax_key* key, const std::string&) {
       return yax_set_text(key, "t", "more", YAX_ZERO_ENDED);
     }},
    {"set bytes", kModify,
     [](yax_key* key, const std::string&) { return yax_set_bytes(key, "t", "more", 4); }},
    {"get int", kRead,
     [](yax_key* key, const std::string&) {
       int64_t number = 0;
       return yax_get_int(key, "n", &number);
     }},
    {"get uint", kRead,
     [](yax_key* key, const std::string&) {
       uint64_t number = 0;
       return yax_get_uint(key, "n", &number);
     }},
    {"get real", kRead,
     [](yax_key* key, const std::string&) {
       double number = 0;
       return yax_get_real(key, "r", &number);
     }},
    {"get text", kRead,
     [](yax_key* key, const std::string&) {
       char text[16];
       return yax_get_text(key, "t", text, sizeof text, nullptr);
     }},
    {"value exists", kRead,
     [](yax_key* key, const std::string&) { return yax_value_exists(key, "t", nullptr); }},
    {"remove value", kDelete,
     [](yax_key* key, const std::string&) { return yax_remove_value(key, "t"); }},
};

TEST(RightsOfCallsTest, NothingGoesWithoutItsBit) {
  const TempDir folder;
  const std::string path = folder / "a.rce";
  yax_options options = YAX_OPTIONS_USUAL;
  options.durability = YAX_DURABILITY_NONE;
  yax_registry* registry = nullptr;
  yax_key* open = nullptr;
  yax_key* key = nullptr;
  ASSERT_EQ(YAX_OK, yax_open(path.c_str(), &options, &registry));
  ASSERT_EQ(YAX_OK, yax_key_at(registry, "open", &open));
  ASSERT_EQ(YAX_OK, yax_key_at(registry, "k", &key));
  ASSERT_EQ(YAX_OK, yax_key_make(open));
  ASSERT_EQ(YAX_OK, yax_key_set_rights(open, 0xFF));
  yax_set_user_number(registry, kOwner);
  ASSERT_EQ(YAX_OK, yax_set_int(key, "n", 5));
  ASSERT_EQ(YAX_OK, yax_set_real(key, "r", 5));
  ASSERT_EQ(YAX_OK, yax_set_text(key, "t", "text", YAX_ZERO_ENDED));
  ASSERT_EQ(YAX_OK, yax_key_set_default(key, 5));
  ASSERT_EQ(YAX_OK, yax_key_backup(key, (folder / "backup").c_str()));
  for (unsigned int rights = 0; rights < 256 && !::testing::Test::HasFailure(); ++rights) {
    yax_set_user_number(registry, kAdministrator);
    ASSERT_EQ(YAX_OK, yax_key_set_rights(key, static_cast<unsigned char>(rights)));
    for (const RightsCall& call : kRightsCalls) {
      for (const unsigned int user : {kOwner, kOther, kAdministrator}) {
        yax_transaction* transaction = nullptr;
        ASSERT_EQ(YAX_OK, yax_begin(registry, &transaction));
        yax_set_user_number(registry, user);
        const bool mayDo = MayDo(user, static_cast<unsigned char>(rights), call.need);
        EXPECT_EQ(mayDo ? YAX_OK : YAX_NO_RIGHT, call.run(key, folder / "."))
            << call.name << ", user " << user << ", rights " << rights;
        yax_cancel(transaction);
      }
    }
  }
  yax_key_free(key);
  yax_key_free(open);
  yax_close(registry);
}

}  // namespace
}  // namespace yax
