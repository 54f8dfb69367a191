// Operations on the nodes and records of a file of their own, each called once, for the tests in
// which something fails below them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "registry/filetree/TernaryRegistry.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

struct NodeCall {
  const char* name;
  std::function<unsigned int(TernaryFile& store, TernaryRegistry& tree)> run;
  bool mayKeepPart = false;  // what has been given back before it fails stays so
  unsigned int expected = status::kOk;
};

// Of the file that MakeNodes makes.
constexpr unsigned int kTemperature = 0x200;  // of string nodes, "rature"
constexpr unsigned int kTempPart = 0x400;     // of string nodes, what is before it
constexpr unsigned int kTemperatureKey = 0x200;
constexpr unsigned int kDataValue = 0x100;

inline void MakeNodes(TernaryRegistry& tree) {
  constexpr unsigned int kAll = 65535;
  for (const char* key : {"temperature", "temperature/sub", "tempo", "x"}) {
    EXPECT_EQ(status::kOk, tree.CreateKey(kAll, nullptr, key, 0, false));
  }
  std::string data(300, 'd');
  Value value = MakeValue(2, data.data(), 300);
  EXPECT_EQ(status::kOk, tree.CreateValue(kAll, nullptr, "temperature", "n1", &value));
  EXPECT_EQ(status::kOk, tree.CreateValue(kAll, nullptr, "temperature", "n2", 7, true));
}

// Reads a record of the kind into a new one and frees it.
template <class Node>
unsigned int ReadOne(TernaryFile& store, unsigned int (TernaryFile::*read)(unsigned int, Node*&),
                     unsigned int id) {
  Node* node = nullptr;
  const unsigned int result = (store.*read)(id, node);
  delete node;
  return result;
}

template <class Node>
unsigned int AcquireOne(TernaryFile& store,
                        unsigned int (TernaryFile::*acquire)(unsigned int, unsigned int*, Node*&)) {
  Node* node = nullptr;
  unsigned int id = 0;
  const unsigned int result = (store.*acquire)(0, &id, node);
  delete node;
  return result;
}

inline const std::vector<NodeCall>& NodeCalls() {
  static const std::vector<NodeCall> kCalls = {
      {"CreateStringNode",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int first = 0;
         return tree.CreateStringNode(0, "a name that takes more than one node", &first, 0);
       }},
      {"SplitNode",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int upper = 0;
         return tree.SplitNode(0, kTemperature, 0, 1, kTempPart, &upper);
       }},
      {"CreateKeyNode",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int key = 0;
         return tree.CreateKeyNode(0, 1, 0xFF, 5, &key, true, false);
       }},
      {"FindValue",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int id = 0;
         TernaryValueNode* record = nullptr;
         const unsigned int result = tree.FindValue(kTemperatureKey, "n1", &id, record);
         delete record;
         return result;
       }},
      {"DeleteAllValues",
       [](TernaryFile&, TernaryRegistry& tree) { return tree.DeleteAllValues(0, kTemperatureKey); },
       true},
      {"DeleteSingleKey",
       [](TernaryFile&, TernaryRegistry& tree) { return tree.DeleteSingleKey(0, kTemperatureKey); },
       true},
      {"RecursiveDeleteKeyTree",
       [](TernaryFile&, TernaryRegistry& tree) {
         return tree.RecursiveDeleteKeyTree(0, kTempPart);
       },
       true},
      {"RecursiveCountKey",
       [](TernaryFile& store, TernaryRegistry& tree) {
         TernaryStringNode node;
         unsigned int result = store.ReadNodeInBuffer(kTempPart, &node);
         KeyInfo info = {};
         return result == 0 ? tree.RecursiveCountKey(&info, &node, 0) : result;
       }},
      {"ReadNodeTree",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int ids[64];
         unsigned int count = 0;
         return tree.ReadNodeTree(kTempPart, ids, &count, 64);
       }},
      {"FindSuffix",
       [](TernaryFile&, TernaryRegistry& tree) {
         unsigned int branch = 0;
         unsigned int next = 0;
         return tree.FindSuffix("temperature", &branch, &next);
       },
       false, status::kNotFound},
      {"LoadNAT",
       [](TernaryFile& store, TernaryRegistry&) {
         NodeAllocationTable* table = nullptr;
         const unsigned int result =
             store.LoadNAT(store.Header().firstTable(NodeKind::kString), table);
         delete table;
         return result;
       }},
      {"ReadNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return ReadOne(store, &TernaryFile::ReadNode, kTemperature);
       }},
      {"ReadKeyNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return ReadOne(store, &TernaryFile::ReadKeyNode, kTemperatureKey);
       }},
      {"ReadValueNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return ReadOne(store, &TernaryFile::ReadValueNode, kDataValue);
       }},
      {"AcquireNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return AcquireOne(store, &TernaryFile::AcquireNode);
       }},
      {"AcquireKeyNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return AcquireOne(store, &TernaryFile::AcquireKeyNode);
       }},
      {"AcquireValueNode",
       [](TernaryFile& store, TernaryRegistry&) {
         return AcquireOne(store, &TernaryFile::AcquireValueNode);
       }},
      {"StoreData",
       [](TernaryFile& store, TernaryRegistry&) {
         unsigned int id = 0;
         return store.StoreData(0, std::string(1000, 'x').data(), 1000, &id);
       }},
      {"ReadData",
       [](TernaryFile& store, TernaryRegistry&) {
         char buffer[300];
         unsigned int size = 300;
         TernaryValueNode value;
         const unsigned int result = store.ReadNodeInBuffer(kDataValue, &value);
         return result == 0 ? store.ReadData(buffer, &size, value.dataWord()) : result;
       }},
      {"DeleteData",
       [](TernaryFile& store, TernaryRegistry&) {
         TernaryValueNode value;
         const unsigned int result = store.ReadNodeInBuffer(kDataValue, &value);
         return result == 0 ? store.DeleteData(0, value.dataWord()) : result;
       }},
      {"ReleaseNodeId", [](TernaryFile& store, TernaryRegistry&) {
         return store.ReleaseKeyNode(0, kTemperatureKey, nullptr);
       }}};
  return kCalls;
}

}  // namespace tamu::registry
