// The names of users by their numbers.
#pragma once

#include <map>
#include <string>

namespace yaxreg {

// A list of users, one a line: "1000 anna"; "anna:x:1000:..." as the system's own list has them; or
// a name alone, whose number is what the library makes of it. Blanks around words and lines that
// begin with # do not count. Of several names of one number the first is shown, all are taken.
class UserNames {
 public:
  // False when a line is none of these, a name is told twice with different numbers, or it could
  // be taken for a number: *reason tells the line and why, and the list is as it was.
  bool Read(const std::string& text, std::string* reason);

  // Null when it has no name.
  const std::string* NameOf(unsigned int number) const;
  // Null when the list does not have the name.
  const unsigned int* NumberOf(const std::string& name) const;

 private:
  std::string Add(const std::string& line);

  std::map<unsigned int, std::string> names_;
  std::map<std::string, unsigned int> numbers_;
};

}  // namespace yaxreg
