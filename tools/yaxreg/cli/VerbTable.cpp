#include "tools/yaxreg/cli/Verb.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace {

const Argument kFile = {"FILE", "The registry file", true, true};
const Argument kPath = {"PATH", "The key, its components separated by /; the root if left out",
                        false, false};
const Argument kKeyPath = {"PATH", "The key, its components separated by /", true, false};
const Argument kValueName = {"NAME", "The value", true, false};

const Option kUser = {"--user", "NAME", "Work as this user instead of the administrator"};
const Option kUid = {"--uid", "N", "The same by the user's number"};

// The options that tell a value's type and data; one of the first four is given.
const Option kInt = {"--int", "NUMBER", "A whole number of 64 bits: 42, -1, 0xFF"};
const Option kString = {"--string", "TEXT", "A text; its end is stored, too"};
const Option kHex = {"--hex", "DIGITS", "Bytes, two hexadecimal digits each"};
const Option kFromFile = {"--file", "FILE", "The bytes of a file; - is the standard input"};
const Option kType = {"--type", "N",
                      "The type, 0 to 5: 0 with --int, 1 with --string, 2 otherwise, unless told"};
const Option kUnset = {"--unset", nullptr, "No data: the value is there, but not set"};

std::vector<Verb> MakeVerbs() {
  return {
      {"create",
       "Make a new registry",
       "Makes an empty registry of 75888 bytes. A file that exists is left alone.",
       {kFile},
       {},
       "yaxreg create device.rce",
       RunCreate},
      {"tree",
       "Show the keys as a tree",
       "Shows a key and all keys below it, sorted by name, each with its values first. Data of the "
       "types 2 to 5 that is a text is shown as one. In parentheses stand the type of all but "
       "numbers and texts of type 1, and what else is to be told.",
       {kFile, kPath},
       {{"-d,--depth", "N", "Show only so many levels below the key"},
        {"-k,--keys", nullptr, "Show no values"}},
       "yaxreg tree device.rce network",
       RunTree},
      {"ls",
       "List the values and keys of a key",
       "Lists the values of a key, sorted, and then the keys directly below it. Keys end in a "
       "slash. A value that is hidden by a newer one of its name is listed with --long only.",
       {kFile, kPath},
       {{"-r,--recursive", nullptr, "List all keys below by their paths, and no values"},
        {"-l,--long", nullptr,
         "Tell owner, rights, default value and counts of keys, type, size and data of values"}},
       "yaxreg ls -l device.rce network",
       RunLs},
      {"get",
       "Print a value",
       "Prints a value: a number in decimal (as a signed one with --signed), a text as it is, "
       "other data in hexadecimal digits. The exit code is 1 when there is no such value or it is "
       "not set, and when the user may not read the key. A value that can be read of a file that "
       "has lost something elsewhere is printed, and the exit code is 3.",
       {kFile, kKeyPath, kValueName},
       {{"--raw", nullptr, "Write the stored bytes as they are"},
        {"--signed", nullptr, "Take a number as a signed one"},
        kUser,
        kUid},
       "yaxreg get device.rce network/eth0 mtu",
       RunGet},
      {"set",
       "Change a value",
       "Gives a value that exists another type and data; numbers have 64 bits. Use add to create "
       "one. Data has at most 1024 bytes, which for --string are a text of at most 1023 bytes and "
       "its end.",
       {kFile, kKeyPath, kValueName},
       {kInt, kString, kHex, kFromFile, kType, kUser, kUid},
       "yaxreg set device.rce network/eth0 mtu --int 1400",
       RunSet},
      {"add",
       "Create a value",
       "Creates a value of a key. A value that exists is refused, because the new one would hide "
       "it; --hide creates it all the same. Names have at most 31 bytes, data at most 1024, which "
       "for --string are a text of at most 1023 bytes and its end.",
       {kFile, kKeyPath, kValueName},
       {kInt,
        kString,
        kHex,
        kFromFile,
        kType,
        kUnset,
        {"--hide", nullptr, "Create it though there is one of this name, which it then hides"},
        kUser,
        kUid},
       "yaxreg add device.rce network/eth0 name --string uplink",
       RunAdd},
      {"rm",
       "Delete a value",
       "Deletes a value; one that it hid is seen again.",
       {kFile, kKeyPath, kValueName},
       {{"-a,--all", nullptr, "Delete those that it hides, too"}, kUser, kUid},
       "yaxreg rm device.rce network/eth0 name",
       RunRm},
      {"mkkey",
       "Create a key",
       "Creates a key, exactly of this name whatever its neighbours are called. Its parent must "
       "exist.",
       {kFile, kKeyPath},
       {{"-p,--parents", nullptr, "Create missing parents, too; a key that exists is fine"},
        {"--default", "NUMBER", "Its default value"},
        kUser,
        kUid},
       "yaxreg mkkey -p device.rce network/eth0",
       RunMkkey},
      {"rmkey",
       "Delete a key",
       "Deletes a key, all keys below it and their values. The root is refused: a registry without "
       "it could never hold a key again.",
       {kFile, kKeyPath},
       {kUser, kUid},
       "yaxreg rmkey device.rce network/eth1",
       RunRmkey},
      {"default",
       "Print or set the default value of a key",
       "Prints the default value, or sets it when a number is given. The exit code is 1 when none "
       "is set. It cannot be taken away again but by an import.",
       {kFile,
        kKeyPath,
        {"NUMBER", "The new default value, a whole number of 64 bits", false, false}},
       {{"--signed", nullptr, "Print it as a signed number"}, kUser, kUid},
       "yaxreg default device.rce network/eth0 7",
       RunDefault},
      {"rights",
       "Print or set the rights on a key",
       "Prints owner and rights of a key, such as rwcd:r---, or sets the rights: two groups of "
       "letters, the owner's and everybody else's, r (read), w (modify), c (create) and d (delete) "
       "in any order. The colon between them is needed; a group without letters, or with - alone, "
       "means no rights for it, as in rwcd:r, rwcd: or :r. Or the byte itself is given, as in "
       "0x1F. Only the owner and the administrator may set them.",
       {kFile, kKeyPath, {"RIGHTS", "The new rights, such as rwcd:r or 0x1F", false, false}},
       {kUser, kUid},
       "yaxreg rights device.rce network/eth0 rwcd:r",
       RunRights},
      {"watch",
       "Print or set the watch bits of a key",
       "Prints the six watch bits of a key as a number, or sets them.",
       {kFile, kKeyPath, {"BITS", "The new bits, 0 to 63", false, false}},
       {kUser, kUid},
       "yaxreg watch device.rce network/eth0 3",
       RunWatch},
      {"export",
       "Write keys and values as JSON",
       "Writes a key and all below it as canonical JSON: sorted, complete, the same bytes for the "
       "same content on every machine. Hidden and unset values, owners, rights, default values and "
       "watch bits are in it; bytes that are no text are written as hexadecimal digits.",
       {kFile, kPath},
       {},
       "yaxreg export device.rce network > network.json",
       RunExport},
      {"import",
       "Take keys and values over from JSON",
       "Reads what export wrote, or the like, from the standard input and creates and changes keys "
       "until they are as it tells. What it does not tell of stays as it is: other keys, other "
       "values, fields that are left out. All of the input is checked before the first change, and "
       "a second import changes nothing. A file that does not exist is made. What is the same "
       "takes no room; another owner, a default value that is taken away, and many new keys "
       "rewrite a key with all keys below it, which uses slots up.",
       {kFile, kPath},
       {{"-n,--dry-run", nullptr, "Only print what would change"}},
       "yaxreg import device.rce network < network.json",
       RunImport},
      {"diff",
       "Compare two registries",
       "Compares key by key and value by value, and prints what differs: - for what only the first "
       "has, + for what only the second has. The exit code is 1 when they differ.",
       {{"FILE1", "The first registry file", true, true},
        {"FILE2", "The second registry file", true, true},
        {"PATH", "Compare only this key and what is below it", false, false}},
       {},
       "yaxreg diff device.rce copy.rce",
       RunDiff},
      {"backup",
       "Write a key and all below it into a backup file",
       "Writes the library's own backup. A file that exists is refused; --force replaces it. The "
       "registry is only read; the backup is in its place when it is complete.",
       {kFile, kKeyPath, {"BACKUP", "The backup file to make", true, true}},
       {{"-f,--force", nullptr, "Replace a backup file that exists"}, kUser, kUid},
       "yaxreg backup device.rce network network.bak",
       RunBackup},
      {"restore",
       "Replace a key by what is in a backup file",
       "Replaces a key and all below it by a backup. The key must exist; only its name stays. "
       "After a failure it is as it was.",
       {kFile, kKeyPath, {"BACKUP", "The backup file", true, true}},
       {kUser, kUid},
       "yaxreg restore device.rce network network.bak",
       RunRestore},
      {"check",
       "Look for damage and wear",
       "Checks headers, tables, free lists, every record that the tree leads to, names, counts and "
       "data. Tells which keys damage touches, and for each kind of record how many slots are in "
       "use, leaked and stranded and how many are left until changes are refused with status 75. A "
       "kind with less than 5 % left is nearly full. The exit code is 3 when the file is damaged, "
       "and 1 when it is not, but has fewer slots left than --min-left asks for.",
       {kFile},
       {{"-n,--names", nullptr, "List the names that are left without a key, too"},
        {"-q,--quiet", nullptr, "Print nothing, only answer by the exit code"},
        {"--min-left", "N",
         "End with 1 when fewer than N slots of any kind are left, so that a monitor can tell"}},
       "yaxreg check --quiet --min-left 1000 device.rce",
       RunCheck},
      {"repair",
       "Save what is undamaged into a new file",
       "Makes a new registry of every key and value that can be read from a damaged one, and lists "
       "what could not be saved. The damaged file is only read. Keys and values that nothing leads "
       "to any more are saved below a key lost+found, by the numbers of their records, such as "
       "(key 0x200). A part of a name that cannot be read is written as the number of its record, "
       "such as (0x500). The last line tells how many of the keys and "
       "values that the file holds were saved; what is only marked as in use counts, so the totals "
       "may be too high where the tables are damaged. The exit code is 0 when everything was "
       "saved, 3 when something was not.",
       {kFile},
       {{"-o,--output", "NEW", "REQUIRED. The file to make; it must not exist", true}},
       "yaxreg repair device.rce -o saved.rce",
       RunRepair},
      {"compact",
       "Rewrite a file and win back the slots that wear has taken",
       "Writes all keys and values into a new file and puts it into the place of the old one: "
       "owner, rights, default values, watch bits, unset and hidden values and the order of values "
       "stay. Slots that are leaked or stranded, and those of names without a key, can be handed "
       "out again. A registry that refuses changes with status 75 works again, unless it is full "
       "of keys and values. No program may have the file open. A damaged file is refused, see "
       "repair.",
       {kFile},
       {{"-f,--force", nullptr, "Drop keys and values that nothing leads to"}},
       "yaxreg compact device.rce",
       RunCompact},
      {"stat",
       "Tell how full and how worn a file is",
       "Tells for each kind of record (string nodes spell the names of keys, data blocks hold the "
       "data of values, 64 bytes each) the slots that the file has, and how many of them are in "
       "use (the tree leads to them), leaked (marked as in use, but nothing leads to them), free "
       "and stranded (free in an older table and never handed out again). The column left tells "
       "how many can still be handed out until changes are refused with status 75, tables how many "
       "of at most 21 there are, worn how much of the room of all tables is lost until the file is "
       "compacted (leaked, stranded, and string nodes that only spell names without a key), per "
       "key how many slots a key of this file takes on the average. The last line tells how many "
       "more such keys fit, and what is full then.",
       {kFile},
       {{"--map", "SVG",
         "Draw the file into an SVG file as well; of files that exist only an empty one and an SVG "
         "file are replaced"}},
       "yaxreg stat device.rce --map device.svg",
       RunStat},
      {"comp ls",
       "List the registered components",
       "Lists the components that are registered, with their names and how they are reached.",
       {kFile},
       {},
       "yaxreg comp ls device.rce",
       RunCompLs},
      {"comp verify",
       "Check the shared objects of the components",
       "Looks whether the shared object of each component is there, is built for the right machine "
       "and has the entry function. The files are only read, nothing is loaded. The exit code is 1 "
       "when something is wrong.",
       {kFile},
       {{"--root", "DIR", "Folder that stands for the device's root folder"},
        {"--machine", "NAME",
         "The machine: x86-64, i386, arm, aarch64 and others. Without it the one that yaxreg is "
         "built for, with --root the one of the first shared object"}},
       "yaxreg comp verify device.rce",
       RunCompVerify},
  };
}

}  // namespace

const std::vector<Verb>& AllVerbs() {
  static const std::vector<Verb> verbs = MakeVerbs();
  return verbs;
}

const std::vector<VerbGroup>& AllVerbGroups() {
  static const std::vector<VerbGroup> groups = {
      {"comp", "Look at the components that are registered"}};
  return groups;
}

}  // namespace yaxreg
