// Reads the names of keys, and with them all keys, into the content of an image.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/image/KeyReader.h"
#include "tools/yaxreg/image/NodeGraph.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

class TreeReader {
 public:
  TreeReader(RegistryImage& image, Orphans orphans);

  void Run();

 private:
  // Of all names together. A sound file can hold more, but only if thousands of keys share names
  // of many thousand characters.
  static constexpr size_t kMostNameBytes = 32u << 20;

  // Bounds of a character that is not bounded.
  static constexpr int kNoLower = -1000;
  static constexpr int kNoUpper = 1000;

  // A key in the order in which it was found: those below one key lie side by side.
  struct Found {
    ContentKey key;
    size_t parent;         // index
    unsigned int subKeys;  // id of the first string node of their names, 0 = none
    size_t firstChild;
    size_t children;
  };
  // A part of the names of one directory, and the part before it.
  struct Piece {
    size_t before;  // index, kNone for the first one
    std::string text;
  };
  // A string node to be visited, and what is known of the names below it.
  struct Visit {
    unsigned int id;
    size_t prefix;  // piece: of the name, before the node's segment
    int above;      // its first character is greater
    int below;      // and lower
  };
  // A name that ends, in one of the directories.
  struct Entry {
    std::string name;
    unsigned int id;  // of the string node
    bool isOrdered;   // a search finds it
  };

  // TreeReader.cpp
  void ReadRoot();
  void ReadRootKey(const TernaryStringNode& node);
  void CheckSubKeys(unsigned int id, const PathMaker& path);
  void ReadDirectories();
  void ReadDirectory(size_t parent);
  void SortEntries(std::vector<Entry>* entries, size_t parent);
  void ReadEntry(const Entry& entry, size_t parent);
  bool IsRepeated(const Entry& entry, size_t parent);
  void AddMadeUp(const std::string& name, size_t parent, unsigned int subKeys);
  void Flatten();
  std::string PathOf(size_t found) const;
  std::string PathBelow(size_t parent, const std::string& name) const;
  std::vector<unsigned int> KeyIds(size_t firstNode) const;

  // TreeReaderNames.cpp
  void VisitNode(const Visit& visit, size_t parent, std::vector<Entry>* entries);
  void AddEntry(size_t name, unsigned int id, bool isOrdered, std::vector<Entry>* entries);
  bool IsAcceptable(const Visit& visit, const TernaryStringNode& node, bool isOrdered,
                    size_t parent);
  void FollowLink(NodeLink link, const Visit& from, Visit to, size_t parent);
  std::string SegmentOf(const Visit& visit, const TernaryStringNode& node, size_t parent);
  std::string SplitOf(const Visit& visit, const TernaryStringNode& node, size_t parent);
  void NoteDeadName(size_t name, size_t parent);
  void ReportLeftovers(unsigned int id, const TernaryStringNode& node, size_t parent);
  size_t AddPiece(size_t before, const std::string& text);
  std::string NameOf(size_t piece) const;
  // The path of what is below a key and begins with a part of a name.
  PathMaker Below(size_t parent, size_t piece) const;

  // TreeReaderStrays.cpp: what is in use, but nothing leads to.
  bool HasStrays() const;
  void ReserveLostAndFound();
  void ReportStrays();
  void ReadLostAndFound();
  void AddStrayKeys();
  void AddStrayValues();

  RegistryImage& image_;
  const Orphans orphans_;
  NodeGraph graph_;
  KeyReader keys_;
  SlotCounters visits_;
  std::vector<Found> found_;
  size_t lostAndFound_ = Content::kNone;  // index in found_
  bool takesStrays_ = false;
  size_t nextDirectory_ = 0;   // index in found_
  std::vector<Piece> pieces_;  // of the directory at hand
  std::vector<Visit> pending_;
  size_t nameBytes_ = 0;
};

}  // namespace yaxreg
