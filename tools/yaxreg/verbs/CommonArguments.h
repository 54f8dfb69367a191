// Arguments and options that many verbs have.
#pragma once

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

constexpr Argument kFile = {"FILE", "The registry file", true, true};
constexpr Argument kPath = {"PATH", "The key, its components separated by /; the root if left out",
                            false, false};
// A key, or the keys that a pattern of content/PathPattern.h matches.
constexpr Argument kPathPattern = {
    "PATH", "The key, or a pattern: * and ? within a name, ** over levels; the root if left out",
    false, false};
constexpr Argument kKeyPath = {"PATH", "The key, its components separated by /", true, false};
constexpr Argument kPlace = {
    "PATH", "The key, its components separated by /; or key and value, a colon between them", true,
    false};
constexpr Argument kValueName = {"NAME", "The value, unless PATH tells it", false, false};

constexpr Option kForce = {"-f,--force", nullptr, "It is fine when there is no such thing"};
constexpr Option kUser = {"--user", "NAME", "Work as this user instead of the administrator"};
constexpr Option kUsers = {"--users", "FILE", "The names of users by their numbers"};
constexpr Option kTimeout = {"--timeout", "SECONDS", "Wait no longer for other programs"};
constexpr Option kUid = {"--uid", "N", "The same by the user's number"};

}  // namespace yaxreg
