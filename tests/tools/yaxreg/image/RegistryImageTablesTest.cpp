// Damage of the headers, the tables and the free lists: keys and values do not depend on them.
#include <gtest/gtest.h>

#include "tests/tools/yaxreg/DamageCase.h"

namespace {

class RegistryImageTables : public ::testing::TestWithParam<DamageCase> {};

TEST_P(RegistryImageTables, OfTheTablesIsToldAndCostsNothing) {
  ExpectFindings(GetParam());
}

const DamageCase kHeaders[] = {
    {"Signature",
     {{0, 0x0FACE000}},
     "damage: the signature is wrong, the library takes it for no "
     "registry\n",
     "",
     ""},
    {"Marker",
     {{4, 0xDEADBEEE}},
     "damage: the signature is wrong, the library takes it for no "
     "registry\n",
     "",
     ""},
    {"Version", {{8, 3}}, "damage: the format version is wrong\n", "", ""},
    {"Revision", {{12, 0}}, "damage: the format version is wrong\n", "", ""},
    {"ReservedByte", {{80, 1}}, "damage: reserved bytes of the file header are not 0\n", "", ""},
    {"ReservedArea", {{88, 1}}, "damage: bytes of the reserved area are not 0\n", "", ""},
    {"EndOfTheReservedArea",
     {{4176, 0x01000000}},
     "damage: bytes of the reserved area are not 0\n",
     "",
     ""},
    {"FirstWord", {{4180, 1}}, "damage: reserved bytes of the header are not 0\n", "", ""},
    {"OwnOffset", {{4184, 0}}, "damage: the header's offset is wrong\n", "", ""},
    {"HeaderVersion", {{4188, 2}}, "damage: the header's version is wrong\n", "", ""},
    {"StringTable",
     {{4192, 0}},
     "damage: the header tells a wrong place of table 0 of string nodes\n",
     "",
     ""},
    {"KeyTable",
     {{4196, 5713}},
     "damage: the header tells a wrong place of table 0 of keys\n",
     "",
     ""},
    {"ValueTable",
     {{4200, 0xFFFFFFFF}},
     "damage: the header tells a wrong place of table 0 of values\n",
     "",
     ""},
    {"DataTable",
     {{4204, 7204}},
     "damage: the header tells a wrong place of table 0 of data blocks\n",
     "",
     ""},
    {"NoStartNode", {{4208, 0}}, "damage: the header leads to a wrong start node\n", "", ""},
    {"OtherStartNode", {{4208, 0x200}}, "damage: the header leads to a wrong start node\n", "", ""},
    {"FreeStartNode", {{4208, 0x600}}, "damage: the header leads to a wrong start node\n", "", ""},
    {"StartNodeOutside",
     {{4208, 0xFFFFFF00}},
     "damage: the header leads to a wrong start node\n",
     "",
     ""},
    {"LengthTooSmall",
     {{4212, 75887}},
     "damage: the header tells a length of 75887 bytes instead of 75888\n",
     "",
     ""},
    {"LengthTooGreat",
     {{4212, 75889}},
     "damage: the header tells a length of 75889 bytes instead of 75888\n",
     "",
     ""},
    {"LastWord", {{4216, 1}}, "damage: reserved bytes of the header are not 0\n", "", ""},
};
INSTANTIATE_TEST_SUITE_P(Headers, RegistryImageTables, ::testing::ValuesIn(kHeaders), DamageName);

const DamageCase kTables[] = {
    {"NextTable",
     {{4220, 75888}},
     "damage: table 0 of string nodes leads to a wrong next table\n",
     "",
     ""},
    {"OwnOffset",
     {{5716, 5711}},
     "damage: table 0 of keys tells a wrong place of itself\n",
     "",
     ""},
    {"AreaOffset",
     {{7212, 24788}},
     "damage: table 0 of values tells a wrong place of its area\n",
     "",
     ""},
    {"EntriesTooFew",
     {{8708, 364}},
     "damage: table 0 of data blocks tells a wrong number of entries\n",
     "",
     ""},
    {"EntriesTooMany",
     {{8708, 0xFFFFFFFF}},
     "damage: table 0 of data blocks tells a wrong number of entries\n",
     "",
     ""},
    {"ReservedWordAt16",
     {{4236, 1}},
     "damage: reserved bytes of table 0 of string nodes are not "
     "0\n",
     "",
     ""},
    {"Number",
     {{4240, 1}},
     "damage: table 0 of string nodes tells a wrong number of itself\n",
     "",
     ""},
    {"ReservedByteAt21",
     {{4240, 0x100}},
     "damage: reserved bytes of table 0 of string nodes are "
     "not 0\n",
     "",
     ""},
    {"ReservedWordAt24",
     {{4244, 1}},
     "damage: reserved bytes of table 0 of string nodes are not "
     "0\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Tables, RegistryImageTables, ::testing::ValuesIn(kTables), DamageName);

// String nodes 1 to 5 are used, 6 to 364 are free: 359. Blocks 1 to 4 are used.
const DamageCase kFreeLists[] = {
    {"CountTooHigh",
     {{4248, 360}},
     "damage: the free list of table 0 of string nodes ends after 359 of 360 slots\n",
     "",
     ""},
    {"CountImpossible",
     {{4248, 365}},
     "damage: the free list of table 0 of string nodes counts more slots than there are\n"
     "damage: the free list of table 0 of string nodes ends after 359 of 365 slots\n",
     "",
     ""},
    {"CountHuge",
     {{4248, 0xFFFFFFFF}},
     "damage: the free list of table 0 of string nodes counts more slots than there are\n"
     "damage: the free list of table 0 of string nodes ends after 359 of 4294967295 slots\n",
     "",
     ""},
    {"CountTooLow",
     {{4248, 358}},
     "damage: table 0 of string nodes has 1 used slot with the entry of a free one: its free list "
     "is longer than it counts\n",
     "",
     ""},
    {"BlockCountTooLow",
     {{8724, 358}},
     "damage: table 0 of data blocks has 1 used slot with the entry of a free one: its free list "
     "is longer than it counts\n",
     "",
     ""},
    {"EndsAtANull",
     {{4252 + 4 * 100, 0}},
     "damage: the free list of table 0 of string nodes ends after 95 of 359 slots\n",
     "",
     ""},
    {"LeadsOutside",
     {{4252 + 4 * 100, 365}},
     "damage: the free list of table 0 of string nodes ends after 95 of 359 slots\n",
     "",
     ""},
    {"Circle",
     {{4252 + 4 * 100, 6}},
     "damage: the free list of table 0 of string nodes is a circle\n",
     "",
     ""},
    {"FirstOutside",
     {{4252, 0xFFFFFFFF}},
     "damage: the free list of table 0 of string nodes ends after 0 of 359 slots\n",
     "",
     ""},
    // The list leaves out slots 6 to 49.
    {"SkipsSlots",
     {{4252, 50}, {4248, 315}},
     "damage: table 0 of string nodes has 44 used slots with the entry of a free one: its free "
     "list is longer than it counts\n",
     "",
     ""},
    {"EntryOfAUsedSlot",
     {{4252 + 4 * 3, 9}},
     "damage: table 0 of string nodes has 1 used slot with the entry of a free one: its free list "
     "is longer than it counts\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(FreeLists, RegistryImageTables, ::testing::ValuesIn(kFreeLists),
                         DamageName);

// A list that holds what is used: programs will overwrite it, or it was deleted.
const DamageCase kUsedSlots[] = {
    {"StringNode",
     {{4252, 5}, {4252 + 4 * 5, 6}, {4248, 360}},
     "loss: /net: string node 0x500 is on the free list: its names may have been deleted\n",
     "",
     ""},
    {"Key",
     {{5744, 3}, {5744 + 4 * 3, 5}, {5740, 361}},
     "loss: /nfs: its key record is on the free list, it may be a deleted one\n",
     "",
     ""},
    {"Value",
     {{7236, 1}, {7236 + 4 * 1, 4}, {7232, 362}},
     "loss: /net: value \"mtu\" is on the free list, it may be a deleted one\n",
     "",
     ""},
    {"Block",
     {{8728, 1}, {8728 + 4 * 1, 5}, {8724, 361}},
     "loss: /net: the data of value \"port\" leads on to more than its size tells\n"
     "loss: /net: the data of value \"port\" is on the free list\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(UsedSlotsOnFreeLists, RegistryImageTables, ::testing::ValuesIn(kUsedSlots),
                         DamageName);

}  // namespace
