// What a component's source says of itself in its shared object, to be read without opening it.
#pragma once

#include "framework/YAX_GUID_ST.h"

// YAX_COMPONENT_OFFERS(1, IID_IClock, IID_IAlarm) in one source of a shared object says the
// component's version, above 0 and greater than that of older ones, and the interfaces that its
// objects have. `yaxreg comp add` and yax::Framework::Register keep them in the registry.
#define YAX_COMPONENT_OFFERS(VERSION, ...)                                                      \
  __attribute__((section(".note.yax"), used, aligned(4))) static constexpr auto kYAXOfferNote = \
      yax_component::OfferNote(VERSION, __VA_ARGS__);

#pragma GCC visibility push(hidden)
namespace yax_component {

// Part of the binary interface: an ELF note; its data are the version and the identifiers as they
// lie in memory.
constexpr char kNoteName[] = "YAX";
constexpr unsigned int kNoteType = 1;

// The note of a component with so many interfaces.
template <unsigned int count>
struct Note {
  unsigned int nameSize;          // with its terminator
  unsigned int dataSize;          // what follows the name
  unsigned int type;              // kNoteType
  char name[sizeof kNoteName];    // kNoteName
  unsigned int version;           // of the component
  YAX_GUID_ST interfaces[count];  // that it offers
};

// What YAX_COMPONENT_OFFERS keeps.
template <class... Guids>
constexpr Note<sizeof...(Guids)> OfferNote(unsigned int version, const Guids&... interfaces) {
  return {sizeof kNoteName, 4 + sizeof(YAX_GUID_ST) * sizeof...(Guids),
          kNoteType,        {'Y', 'A', 'X', 0},
          version,          {interfaces...}};
}

}  // namespace yax_component
#pragma GCC visibility pop
