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
  // A key in the order in which it was found: those below one key lie side by side.
  struct Found {
    ContentKey key;
    size_t parent;         // index
    unsigned int subKeys;  // id of the first string node of their names, 0 = none
    size_t firstChild;
    size_t children;
  };
  // A string node to be visited, and what is known of the names below it.
  struct Visit {
    unsigned int id;
    std::string prefix;  // of the name, before the node's segment
    int above;           // its first character is greater
    int below;           // and lower
  };
  // A name that ends, in one of the directories.
  struct Entry {
    std::string name;
    unsigned int id;  // of the string node
    bool isOrdered;   // a search finds it
  };

  void ReadRoot();
  void AddOrphans();
  void AddMadeUp(const std::string& name, size_t parent, unsigned int subKeys);
  void ReadLostAndFound();
  void ReadDirectory(size_t parent);
  void VisitNode(const Visit& visit, size_t parent, std::vector<Entry>* entries);
  bool IsAcceptable(const Visit& visit, const TernaryStringNode& node, bool isOrdered,
                    size_t parent);
  void CheckSubKeys(unsigned int id, const std::string& path);
  void FollowLink(NodeLink link, const Visit& from, Visit to, size_t parent);
  std::string SegmentOf(const Visit& visit, const TernaryStringNode& node, size_t parent);
  std::string SplitOf(const Visit& visit, const TernaryStringNode& node, size_t parent);
  void NoteDeadName(const std::string& name, size_t parent);
  void ReportLeftovers(unsigned int id, const TernaryStringNode& node, size_t parent);
  void ReadEntry(const Entry& entry, size_t parent);
  bool IsRepeated(const Entry& entry, size_t parent);
  void Flatten();
  std::string PathOf(size_t found) const;
  std::string PathBelow(size_t parent, const std::string& name) const;
  std::vector<unsigned int> KeyIds() const;
  static NodeGraph TakeGraph(RegistryImage& image, Orphans orphans);

  RegistryImage& image_;
  NodeGraph graph_;
  KeyReader keys_;
  SlotCounters visits_;
  std::vector<Found> found_;
  size_t lostAndFound_ = Content::kNone;  // index in found_
  std::vector<Visit> pending_;
};

}  // namespace yaxreg
