#include "tests/framework/components/Notes.h"

ComponentNotes& Notes() {
  static ComponentNotes notes;
  return notes;
}
