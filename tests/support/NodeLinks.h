// Damaging a registry file that nobody has open.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "registry/format/NodeLink.h"
#include "registry/store/Changes.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// Lets a link of a string node lead elsewhere.
inline void PutLink(const std::string& path, unsigned int node, NodeLink link, unsigned int id) {
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.Open(path.c_str()));
  Changes changes(store);
  TernaryStringNode record;
  ASSERT_EQ(status::kOk, changes.Read(node, &record));
  SetLink(&record, link, id);
  ASSERT_EQ(status::kOk, changes.Write(node, record));
  ASSERT_EQ(status::kOk, changes.End(status::kOk));
}

}  // namespace tamu::registry
