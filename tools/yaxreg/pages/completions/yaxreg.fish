# Completion of yaxreg for fish.
# Made from the table of verbs, do not edit.

set -g -- __yaxreg_valued --count --default --depth --file --hex --int --interface --machine --map --min-left --name --offers --output --owner --path --root --seed --size --string --time --timeout --type --uid --user --users --value -d -o

# The verb and the arguments so far, without options and their values.
function __yaxreg_given
    set -l words (commandline -opc)
    set -l isvalue 0
    for word in $words[2..-1]
        if test $isvalue -eq 1
            set isvalue 0
        else if contains -- $word $__yaxreg_valued
            set isvalue 1
        else if not string match -q -- '-?*' $word
            printf '%s\n' $word
        end
    end
end

# True when just the verb and that many arguments are there.
function __yaxreg_at -a count
    set -l given (__yaxreg_given)
    test (count $given) -eq (math (count $argv) - 1 + $count); and __yaxreg_is $argv[2..-1]
end

# True behind the verb.
function __yaxreg_is
    set -l given (__yaxreg_given)
    set -l words (count $argv)
    test $words -eq 0; and return 0
    test (count $given) -ge $words; and test "$given[1..$words]" = "$argv"
end

# Keys of the registry file that stands behind the verb of that many words, one level.
function __yaxreg_keys -a verb
    set -l given (__yaxreg_given)
    set -l above (string replace -r '[^/]*$' '' -- (commandline -ct))
    for line in (yaxreg ls -- $given[(math $verb + 1)] $above 2>/dev/null)
        string match -q -- '*/' $line; and printf '%s%b\n' $above $line
    end
end

# Values of the key that stands behind the file.
function __yaxreg_values -a verb
    set -l given (__yaxreg_given)
    for line in (yaxreg ls -- $given[(math $verb + 1)] $given[(math $verb + 2)] 2>/dev/null)
        string match -q -- '*/' $line; or printf '%b\n' $line
    end
end

complete -c yaxreg -f
complete -c yaxreg -l help -d 'Print help'
complete -c yaxreg -n '__yaxreg_at 0' -l version -d 'Print the version'
complete -c yaxreg -n '__yaxreg_at 0' -a comp -d 'Look at the components that are registered, and change what is'
complete -c yaxreg -n '__yaxreg_at 0' -a create -d 'Make a new registry'
complete -c yaxreg -n '__yaxreg_at 0 create' -F
complete -c yaxreg -n '__yaxreg_is create' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a tree -d 'Show the keys as a tree'
complete -c yaxreg -n '__yaxreg_at 0 tree' -F
complete -c yaxreg -n '__yaxreg_at 1 tree' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is tree' -s d -l depth -d 'Show only so many levels below the key' -x
complete -c yaxreg -n '__yaxreg_is tree' -s k -l keys -d 'Show no values'
complete -c yaxreg -n '__yaxreg_is tree' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a ls -d 'List the values and keys of a key'
complete -c yaxreg -n '__yaxreg_at 0 ls' -F
complete -c yaxreg -n '__yaxreg_at 1 ls' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is ls' -s r -l recursive -d 'List all keys below by their paths, and no values'
complete -c yaxreg -n '__yaxreg_is ls' -s l -l long -d 'Tell owner, rights, default value and counts of keys, type, size and data of values'
complete -c yaxreg -n '__yaxreg_is ls' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a get -d 'Print a value'
complete -c yaxreg -n '__yaxreg_at 0 get' -F
complete -c yaxreg -n '__yaxreg_at 1 get' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 get' -a '(__yaxreg_values 1)'
complete -c yaxreg -n '__yaxreg_is get' -l raw -d 'Write the stored bytes as they are'
complete -c yaxreg -n '__yaxreg_is get' -l signed -d 'Take a number as a signed one'
complete -c yaxreg -n '__yaxreg_is get' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is get' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is get' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a find -d 'Find keys and values'
complete -c yaxreg -n '__yaxreg_at 0 find' -F
complete -c yaxreg -n '__yaxreg_at 1 find' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is find' -l name -d 'The name of the key or value' -x
complete -c yaxreg -n '__yaxreg_is find' -l value -d 'What the value holds: a text, a number, or other data in hexadecimal digits' -x
complete -c yaxreg -n '__yaxreg_is find' -l type -d 'The type of the value, 0 to 5' -x
complete -c yaxreg -n '__yaxreg_is find' -l size -d 'How many bytes the value has: 64, 1..64, 65..' -x
complete -c yaxreg -n '__yaxreg_is find' -l owner -d 'Who owns the key, by number or name' -x
complete -c yaxreg -n '__yaxreg_is find' -s l -l long -d 'Tell rights and owner of keys, data, type and size of values'
complete -c yaxreg -n '__yaxreg_is find' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a du -d 'Tell which keys take the most'
complete -c yaxreg -n '__yaxreg_at 0 du' -F
complete -c yaxreg -n '__yaxreg_at 1 du' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is du' -s d -l depth -d 'So many levels below the key; 1 if left out' -x
complete -c yaxreg -n '__yaxreg_is du' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a put -d 'Create or change a value'
complete -c yaxreg -n '__yaxreg_at 0 put' -F
complete -c yaxreg -n '__yaxreg_at 1 put' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 put' -a '(__yaxreg_values 1)'
complete -c yaxreg -n '__yaxreg_is put' -l int -d 'A whole number of 64 bits: 42, -1, 0xFF' -x
complete -c yaxreg -n '__yaxreg_is put' -l string -d 'A text; its end is stored, too' -x
complete -c yaxreg -n '__yaxreg_is put' -l hex -d 'Bytes, two hexadecimal digits each' -x
complete -c yaxreg -n '__yaxreg_is put' -l file -d 'The bytes of a file; - is the standard input' -r -F
complete -c yaxreg -n '__yaxreg_is put' -l type -d 'The type, 0 to 5: 0 with --int, 1 with --string, 2 otherwise, unless told' -x
complete -c yaxreg -n '__yaxreg_is put' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is put' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is put' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is put' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a set -d 'Change a value'
complete -c yaxreg -n '__yaxreg_at 0 set' -F
complete -c yaxreg -n '__yaxreg_at 1 set' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 set' -a '(__yaxreg_values 1)'
complete -c yaxreg -n '__yaxreg_is set' -l int -d 'A whole number of 64 bits: 42, -1, 0xFF' -x
complete -c yaxreg -n '__yaxreg_is set' -l string -d 'A text; its end is stored, too' -x
complete -c yaxreg -n '__yaxreg_is set' -l hex -d 'Bytes, two hexadecimal digits each' -x
complete -c yaxreg -n '__yaxreg_is set' -l file -d 'The bytes of a file; - is the standard input' -r -F
complete -c yaxreg -n '__yaxreg_is set' -l type -d 'The type, 0 to 5: 0 with --int, 1 with --string, 2 otherwise, unless told' -x
complete -c yaxreg -n '__yaxreg_is set' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is set' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is set' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is set' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a add -d 'Create a value'
complete -c yaxreg -n '__yaxreg_at 0 add' -F
complete -c yaxreg -n '__yaxreg_at 1 add' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 add' -a '(__yaxreg_values 1)'
complete -c yaxreg -n '__yaxreg_is add' -l int -d 'A whole number of 64 bits: 42, -1, 0xFF' -x
complete -c yaxreg -n '__yaxreg_is add' -l string -d 'A text; its end is stored, too' -x
complete -c yaxreg -n '__yaxreg_is add' -l hex -d 'Bytes, two hexadecimal digits each' -x
complete -c yaxreg -n '__yaxreg_is add' -l file -d 'The bytes of a file; - is the standard input' -r -F
complete -c yaxreg -n '__yaxreg_is add' -l type -d 'The type, 0 to 5: 0 with --int, 1 with --string, 2 otherwise, unless told' -x
complete -c yaxreg -n '__yaxreg_is add' -l unset -d 'No data: the value is there, but not set'
complete -c yaxreg -n '__yaxreg_is add' -l hide -d 'Create it though there is one of this name, which it then hides'
complete -c yaxreg -n '__yaxreg_is add' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is add' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is add' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is add' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a rm -d 'Delete a value'
complete -c yaxreg -n '__yaxreg_at 0 rm' -F
complete -c yaxreg -n '__yaxreg_at 1 rm' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 rm' -a '(__yaxreg_values 1)'
complete -c yaxreg -n '__yaxreg_is rm' -s a -l all -d 'Delete those that it hides, too'
complete -c yaxreg -n '__yaxreg_is rm' -s f -l force -d 'It is fine when there is no such thing'
complete -c yaxreg -n '__yaxreg_is rm' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is rm' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is rm' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is rm' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a cp -d 'Copy a key or a value'
complete -c yaxreg -n '__yaxreg_at 0 cp' -F
complete -c yaxreg -n '__yaxreg_at 1 cp' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 cp' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is cp' -s f -l force -d 'Replace what is there'
complete -c yaxreg -n '__yaxreg_is cp' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is cp' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a mv -d 'Move or rename a key or a value'
complete -c yaxreg -n '__yaxreg_at 0 mv' -F
complete -c yaxreg -n '__yaxreg_at 1 mv' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 mv' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is mv' -s f -l force -d 'Replace what is there'
complete -c yaxreg -n '__yaxreg_is mv' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is mv' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a mkkey -d 'Create a key'
complete -c yaxreg -n '__yaxreg_at 0 mkkey' -F
complete -c yaxreg -n '__yaxreg_at 1 mkkey' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is mkkey' -s p -l parents -d 'Create missing parents, too; a key that exists is fine'
complete -c yaxreg -n '__yaxreg_is mkkey' -l default -d 'Its default value' -x
complete -c yaxreg -n '__yaxreg_is mkkey' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is mkkey' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is mkkey' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is mkkey' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a rmkey -d 'Delete a key'
complete -c yaxreg -n '__yaxreg_at 0 rmkey' -F
complete -c yaxreg -n '__yaxreg_at 1 rmkey' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is rmkey' -s f -l force -d 'It is fine when there is no such thing'
complete -c yaxreg -n '__yaxreg_is rmkey' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is rmkey' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is rmkey' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is rmkey' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a default -d 'Print or set the default value of a key'
complete -c yaxreg -n '__yaxreg_at 0 default' -F
complete -c yaxreg -n '__yaxreg_at 1 default' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is default' -l signed -d 'Print it as a signed number'
complete -c yaxreg -n '__yaxreg_is default' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is default' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is default' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is default' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a rights -d 'Print or set the rights on a key'
complete -c yaxreg -n '__yaxreg_at 0 rights' -F
complete -c yaxreg -n '__yaxreg_at 1 rights' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is rights' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is rights' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is rights' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is rights' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a watch -d 'Print or set the watch bits of a key'
complete -c yaxreg -n '__yaxreg_at 0 watch' -F
complete -c yaxreg -n '__yaxreg_at 1 watch' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is watch' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is watch' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is watch' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is watch' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a monitor -d 'Print changes as they happen'
complete -c yaxreg -n '__yaxreg_at 0 monitor' -F
complete -c yaxreg -n '__yaxreg_at 1 monitor' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is monitor' -l value -d 'Only the values of this name' -x
complete -c yaxreg -n '__yaxreg_is monitor' -l count -d 'End after so many lines' -x
complete -c yaxreg -n '__yaxreg_is monitor' -l timeout -d 'End after so many seconds' -x
complete -c yaxreg -n '__yaxreg_is monitor' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is monitor' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is monitor' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a export -d 'Write keys and values as JSON'
complete -c yaxreg -n '__yaxreg_at 0 export' -F
complete -c yaxreg -n '__yaxreg_at 1 export' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is export' -l users -d 'The names of users by their numbers' -r -F
complete -c yaxreg -n '__yaxreg_is export' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a import -d 'Take keys and values over from JSON'
complete -c yaxreg -n '__yaxreg_at 0 import' -F
complete -c yaxreg -n '__yaxreg_at 1 import' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is import' -l merge -d 'Leave what the input does not tell of as it is, as without options'
complete -c yaxreg -n '__yaxreg_is import' -l exact -d 'Delete keys and values below PATH that the input does not tell of'
complete -c yaxreg -n '__yaxreg_is import' -l reverse -d 'Take a patch back'
complete -c yaxreg -n '__yaxreg_is import' -s n -l dry-run -d 'Only print what would change'
complete -c yaxreg -n '__yaxreg_is import' -l users -d 'The names of users by their numbers' -r -F
complete -c yaxreg -n '__yaxreg_is import' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is import' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a edit -d 'Change a key in an editor'
complete -c yaxreg -n '__yaxreg_at 0 edit' -F
complete -c yaxreg -n '__yaxreg_at 1 edit' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is edit' -l users -d 'The names of users by their numbers' -r -F
complete -c yaxreg -n '__yaxreg_is edit' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is edit' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a diff -d 'Compare two registries'
complete -c yaxreg -n '__yaxreg_at 0 diff' -F
complete -c yaxreg -n '__yaxreg_at 1 diff' -F
complete -c yaxreg -n '__yaxreg_at 2 diff' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_is diff' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a backup -d 'Write a key and all below it into a backup file'
complete -c yaxreg -n '__yaxreg_at 0 backup' -F
complete -c yaxreg -n '__yaxreg_at 1 backup' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 backup' -F
complete -c yaxreg -n '__yaxreg_is backup' -s f -l force -d 'Replace a backup file that exists'
complete -c yaxreg -n '__yaxreg_is backup' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is backup' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is backup' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a restore -d 'Replace a key by what is in a backup file'
complete -c yaxreg -n '__yaxreg_at 0 restore' -F
complete -c yaxreg -n '__yaxreg_at 1 restore' -a '(__yaxreg_keys 1)'
complete -c yaxreg -n '__yaxreg_at 2 restore' -F
complete -c yaxreg -n '__yaxreg_is restore' -l user -d 'Work as this user instead of the administrator' -x
complete -c yaxreg -n '__yaxreg_is restore' -l uid -d 'The same by the user\'s number' -x
complete -c yaxreg -n '__yaxreg_is restore' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is restore' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a batch -d 'Run commands as one change'
complete -c yaxreg -n '__yaxreg_at 0 batch' -F
complete -c yaxreg -n '__yaxreg_at 1 batch' -F
complete -c yaxreg -n '__yaxreg_is batch' -s n -l dry-run -d 'Run them, but change nothing'
complete -c yaxreg -n '__yaxreg_is batch' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is batch' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a shell -d 'Take commands at a prompt'
complete -c yaxreg -n '__yaxreg_at 0 shell' -F
complete -c yaxreg -n '__yaxreg_is shell' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a check -d 'Look for damage and wear'
complete -c yaxreg -n '__yaxreg_at 0 check' -F
complete -c yaxreg -n '__yaxreg_is check' -s n -l names -d 'List the names that are left without a key, too'
complete -c yaxreg -n '__yaxreg_is check' -s q -l quiet -d 'Print nothing, only answer by the exit code'
complete -c yaxreg -n '__yaxreg_is check' -l min-left -d 'End with 1 when fewer than N slots of any kind are left, so that a monitor can tell' -x
complete -c yaxreg -n '__yaxreg_is check' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a repair -d 'Save what is undamaged'
complete -c yaxreg -n '__yaxreg_at 0 repair' -F
complete -c yaxreg -n '__yaxreg_is repair' -s o -l output -d 'The file to make; it must not exist' -r -F
complete -c yaxreg -n '__yaxreg_is repair' -s i -l in-place -d 'Repair the file itself'
complete -c yaxreg -n '__yaxreg_is repair' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is repair' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a compact -d 'Rewrite a file and win back the slots that wear has taken'
complete -c yaxreg -n '__yaxreg_at 0 compact' -F
complete -c yaxreg -n '__yaxreg_is compact' -s f -l force -d 'Drop keys and values that nothing leads to'
complete -c yaxreg -n '__yaxreg_is compact' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is compact' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a stat -d 'Tell how full and how worn a file is'
complete -c yaxreg -n '__yaxreg_at 0 stat' -F
complete -c yaxreg -n '__yaxreg_is stat' -l map -d 'Draw the file into an SVG file as well; of files that exist only an empty one and an SVG file are replaced' -r -F
complete -c yaxreg -n '__yaxreg_is stat' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a view -d 'Show a file as a page for browsers'
complete -c yaxreg -n '__yaxreg_at 0 view' -F
complete -c yaxreg -n '__yaxreg_at 1 view' -F
complete -c yaxreg -n '__yaxreg_is view' -s o -l output -d 'Write the page to this file instead of the standard output; of files that exist only an empty one and such a page are replaced' -x
complete -c yaxreg -n '__yaxreg_is view' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0' -a selftest -d 'Try out whether this device keeps what is promised'
complete -c yaxreg -n '__yaxreg_at 0 selftest' -F
complete -c yaxreg -n '__yaxreg_is selftest' -l time -d 'How long, 10 if left out; each part has one round at least' -x
complete -c yaxreg -n '__yaxreg_is selftest' -l seed -d 'Draw the same damage as a test before' -x
complete -c yaxreg -n '__yaxreg_is selftest' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0 comp' -a ls -d 'List the registered components'
complete -c yaxreg -n '__yaxreg_at 0 comp ls' -F
complete -c yaxreg -n '__yaxreg_is comp ls' -l interface -d 'Those alone that offer the interface, the newest version first' -x
complete -c yaxreg -n '__yaxreg_is comp ls' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0 comp' -a verify -d 'Check the shared objects of the components'
complete -c yaxreg -n '__yaxreg_at 0 comp verify' -F
complete -c yaxreg -n '__yaxreg_is comp verify' -l root -d 'Folder that stands for the device\'s root folder' -r -F
complete -c yaxreg -n '__yaxreg_is comp verify' -l machine -d 'The machine: x86-64, i386, arm, aarch64 and others. Without it the one that yaxreg is built for, with --root the one of the first shared object' -x
complete -c yaxreg -n '__yaxreg_is comp verify' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0 comp' -a add -d 'Register a component'
complete -c yaxreg -n '__yaxreg_at 0 comp add' -F
complete -c yaxreg -n '__yaxreg_at 2 comp add' -F
complete -c yaxreg -n '__yaxreg_is comp add' -l name -d 'The component\'s name' -x
complete -c yaxreg -n '__yaxreg_is comp add' -l root -d 'Folder that stands for the device\'s root folder' -r -F
complete -c yaxreg -n '__yaxreg_is comp add' -l machine -d 'The machine that it must be for, as for comp verify' -x
complete -c yaxreg -n '__yaxreg_is comp add' -l offers -d 'Its version and the interfaces that it has, or none' -x
complete -c yaxreg -n '__yaxreg_is comp add' -s f -l force -d 'Replace a registration that is there'
complete -c yaxreg -n '__yaxreg_is comp add' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is comp add' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0 comp' -a set -d 'Change the registration of a component'
complete -c yaxreg -n '__yaxreg_at 0 comp set' -F
complete -c yaxreg -n '__yaxreg_is comp set' -l name -d 'The component\'s name' -x
complete -c yaxreg -n '__yaxreg_is comp set' -l path -d 'The shared object, by its path on the device' -r -F
complete -c yaxreg -n '__yaxreg_is comp set' -l offers -d 'Its version and the interfaces that it has, or none' -x
complete -c yaxreg -n '__yaxreg_is comp set' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is comp set' -l json -d 'Print JSON'
complete -c yaxreg -n '__yaxreg_at 0 comp' -a rm -d 'Take a component out of the registry'
complete -c yaxreg -n '__yaxreg_at 0 comp rm' -F
complete -c yaxreg -n '__yaxreg_is comp rm' -s f -l force -d 'It is fine when there is no such thing'
complete -c yaxreg -n '__yaxreg_is comp rm' -l timeout -d 'Wait no longer for other programs' -x
complete -c yaxreg -n '__yaxreg_is comp rm' -l json -d 'Print JSON'
