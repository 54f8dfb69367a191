#include <gtest/gtest.h>

#include "registry/keytree/RegistryInterface.h"

namespace tamu::registry {

typedef unsigned int U32;
typedef unsigned long long U64;

// The table as a program sees it that was built with a declaration of its own. With internal
// linkage the compiler would know that nothing implements it.
class ForeignInterface {
 public:
  virtual ~ForeignInterface() = default;
  virtual U32 Slot2(const char*) = 0;
  virtual U32 Slot3() = 0;
  virtual U32 Slot4(U32, void*, const char*, U64, bool) = 0;
  virtual U32 Slot5(U32, void*, const char*) = 0;
  virtual U32 Slot6(U32, void*, const char*, U32) = 0;
  virtual U32 Slot7(U32, void*, const char*, KeyInfo*) = 0;
  virtual U32 Slot8(U32, void*, const char*, U64*) = 0;
  virtual U32 Slot9(U32, void*, const char*, U64, bool) = 0;
  virtual U32 Slot10(U32, void*, const char*, const char*, Value*) = 0;
  virtual U32 Slot11(U32, void*, const char*, const char*, Value*) = 0;
  virtual U32 Slot12(const char*, void*&) = 0;
  virtual U32 Slot13(void*) = 0;
  virtual U32 Slot14(const char*, Key*) = 0;
  virtual U32 Slot15(Key*) = 0;
  virtual U32 Slot16(U32, void*, const char*, const char*) = 0;
  virtual U32 Slot17(U32, void*, const char*, const char*) = 0;
  virtual U32 Slot18(U32, void*, const char*, const char*, U64, bool) = 0;
  virtual U32 Slot19(U32, void*, const char*, const char*, Value*) = 0;
  virtual U32 Slot20(U32, void*, const char*, const char*) = 0;
  virtual U32 Slot21(U32, void*, const char*, const char*, U64*, bool) = 0;
  virtual U32 Slot22(U32, void*, const char*, U32, NameList*, U32) = 0;
  virtual U32 Slot23(U32, void*, const char*, U32, NameList*) = 0;
  virtual U32 Slot24(U32, void*, const char*, unsigned char) = 0;
  virtual U32 Slot25(U32, void*, const char*, unsigned char*) = 0;
  virtual U32 Slot26(U32, void*, const char*, unsigned char) = 0;
  virtual U32 Slot27(ChangeBuffer*&) = 0;
  virtual U32 Slot28(RegistryInfo*) = 0;
  virtual U32 Slot29(U32, void*, const char*, const char*, U32*) = 0;
};

namespace {

TEST(RegistryInterface, EveryOperationOfTheBaseIsNotSupported) {
  RegistryInterface base;
  void* tree = nullptr;
  ChangeBuffer* buffer = nullptr;
  constexpr U32 kNo = status::kNotSupported;
  EXPECT_EQ(kNo, 37u);
  EXPECT_EQ(base.Initialize("p"), kNo);
  EXPECT_EQ(base.Finalize(), kNo);
  EXPECT_EQ(base.CreateKey(1, tree, "p", 0, false), kNo);
  EXPECT_EQ(base.DeleteKey(1, tree, "p"), kNo);
  EXPECT_EQ(base.FindKey(1, tree, "p", 0), kNo);
  EXPECT_EQ(base.GetKeyInfo(1, tree, "p", nullptr), kNo);
  EXPECT_EQ(base.GetDefaultValue(1, tree, "p", nullptr), kNo);
  EXPECT_EQ(base.SetDefaultValue(1, tree, "p", 0, false), kNo);
  EXPECT_EQ(base.GetValue(1, tree, "p", "n", nullptr), kNo);
  EXPECT_EQ(base.SetValue(1, tree, "p", "n", nullptr), kNo);
  EXPECT_EQ(base.LoadKeyTree("p", tree), kNo);
  EXPECT_EQ(base.UnloadKeyTree(tree), kNo);
  EXPECT_EQ(base.LoadKey("p", nullptr), kNo);
  EXPECT_EQ(base.StoreKey(nullptr), kNo);
  EXPECT_EQ(base.BackupKeyTree(1, tree, "p", "f"), kNo);
  EXPECT_EQ(base.RestoreKeyTree(1, tree, "p", "f"), kNo);
  EXPECT_EQ(base.CreateValue(1, tree, "p", "n", 0, false), kNo);
  EXPECT_EQ(base.CreateValue(1, tree, "p", "n", nullptr), kNo);
  EXPECT_EQ(base.DeleteValue(1, tree, "p", "n"), kNo);
  EXPECT_EQ(base.GetSetValue(1, tree, "p", "n", nullptr, false), kNo);
  EXPECT_EQ(base.ListKeys(1, tree, "p", 0, nullptr, 0), kNo);
  EXPECT_EQ(base.ListValues(1, tree, "p", 0, nullptr), kNo);
  EXPECT_EQ(base.SetKeyPermission(1, tree, "p", 0), kNo);
  EXPECT_EQ(base.GetKeyPermission(1, tree, "p", nullptr), kNo);
  EXPECT_EQ(base.SetKeyWatch(1, tree, "p", 0), kNo);
  EXPECT_EQ(base.GetChangeBuffer(buffer), kNo);
  EXPECT_EQ(base.GetRegistryInfo(nullptr), kNo);
  EXPECT_EQ(base.GetValueOffset(1, tree, "p", "n", nullptr), kNo);
  EXPECT_EQ(tree, nullptr);
  EXPECT_EQ(buffer, nullptr);
}

// Each operation answers its place in the table; the destructor has the first.
class Probe : public RegistryInterface {
 public:
  explicit Probe(bool* destroyed) : mDestroyed(destroyed) {}
  ~Probe() override { *mDestroyed = true; }
  U32 Initialize(const char*) override { return 2; }
  U32 Finalize() override { return 3; }
  U32 CreateKey(U32, void*, const char*, U64, bool) override { return 4; }
  U32 DeleteKey(U32, void*, const char*) override { return 5; }
  U32 FindKey(U32, void*, const char*, U32) override { return 6; }
  U32 GetKeyInfo(U32, void*, const char*, KeyInfo*) override { return 7; }
  U32 GetDefaultValue(U32, void*, const char*, U64*) override { return 8; }
  U32 SetDefaultValue(U32, void*, const char*, U64, bool) override { return 9; }
  U32 GetValue(U32, void*, const char*, const char*, Value*) override { return 10; }
  U32 SetValue(U32, void*, const char*, const char*, Value*) override { return 11; }
  U32 LoadKeyTree(const char*, void*&) override { return 12; }
  U32 UnloadKeyTree(void*) override { return 13; }
  U32 LoadKey(const char*, Key*) override { return 14; }
  U32 StoreKey(Key*) override { return 15; }
  U32 BackupKeyTree(U32, void*, const char*, const char*) override { return 16; }
  U32 RestoreKeyTree(U32, void*, const char*, const char*) override { return 17; }
  U32 CreateValue(U32, void*, const char*, const char*, U64, bool) override { return 18; }
  U32 CreateValue(U32, void*, const char*, const char*, Value*) override { return 19; }
  U32 DeleteValue(U32, void*, const char*, const char*) override { return 20; }
  U32 GetSetValue(U32, void*, const char*, const char*, U64*, bool) override { return 21; }
  U32 ListKeys(U32, void*, const char*, U32, NameList*, U32) override { return 22; }
  U32 ListValues(U32, void*, const char*, U32, NameList*) override { return 23; }
  U32 SetKeyPermission(U32, void*, const char*, unsigned char) override { return 24; }
  U32 GetKeyPermission(U32, void*, const char*, unsigned char*) override { return 25; }
  U32 SetKeyWatch(U32, void*, const char*, unsigned char) override { return 26; }
  U32 GetChangeBuffer(ChangeBuffer*&) override { return 27; }
  U32 GetRegistryInfo(RegistryInfo*) override { return 28; }
  U32 GetValueOffset(U32, void*, const char*, const char*, U32*) override { return 29; }

 private:
  bool* mDestroyed;
};

// The object under its foreign declaration. The empty assembly keeps from the compiler that both
// are one object, which the language has no words for.
ForeignInterface* MakeForeign(bool* destroyed) {
  void* object = static_cast<RegistryInterface*>(new Probe(destroyed));
  asm volatile("" : "+r"(object) : : "memory");
  return static_cast<ForeignInterface*>(object);
}

TEST(RegistryInterface, OperationsKeepTheirSlots) {
  bool destroyed = false;
  ForeignInterface* foreign = MakeForeign(&destroyed);
  void* tree = nullptr;
  ChangeBuffer* buffer = nullptr;
  EXPECT_EQ(foreign->Slot2("p"), 2u);
  EXPECT_EQ(foreign->Slot3(), 3u);
  EXPECT_EQ(foreign->Slot4(1, tree, "p", 0, false), 4u);
  EXPECT_EQ(foreign->Slot5(1, tree, "p"), 5u);
  EXPECT_EQ(foreign->Slot6(1, tree, "p", 0), 6u);
  EXPECT_EQ(foreign->Slot7(1, tree, "p", nullptr), 7u);
  EXPECT_EQ(foreign->Slot8(1, tree, "p", nullptr), 8u);
  EXPECT_EQ(foreign->Slot9(1, tree, "p", 0, false), 9u);
  EXPECT_EQ(foreign->Slot10(1, tree, "p", "n", nullptr), 10u);
  EXPECT_EQ(foreign->Slot11(1, tree, "p", "n", nullptr), 11u);
  EXPECT_EQ(foreign->Slot12("p", tree), 12u);
  EXPECT_EQ(foreign->Slot13(tree), 13u);
  EXPECT_EQ(foreign->Slot14("p", nullptr), 14u);
  EXPECT_EQ(foreign->Slot15(nullptr), 15u);
  EXPECT_EQ(foreign->Slot16(1, tree, "p", "f"), 16u);
  EXPECT_EQ(foreign->Slot17(1, tree, "p", "f"), 17u);
  EXPECT_EQ(foreign->Slot18(1, tree, "p", "n", 0, false), 18u);
  EXPECT_EQ(foreign->Slot19(1, tree, "p", "n", nullptr), 19u);
  EXPECT_EQ(foreign->Slot20(1, tree, "p", "n"), 20u);
  EXPECT_EQ(foreign->Slot21(1, tree, "p", "n", nullptr, false), 21u);
  EXPECT_EQ(foreign->Slot22(1, tree, "p", 0, nullptr, 0), 22u);
  EXPECT_EQ(foreign->Slot23(1, tree, "p", 0, nullptr), 23u);
  EXPECT_EQ(foreign->Slot24(1, tree, "p", 0), 24u);
  EXPECT_EQ(foreign->Slot25(1, tree, "p", nullptr), 25u);
  EXPECT_EQ(foreign->Slot26(1, tree, "p", 0), 26u);
  EXPECT_EQ(foreign->Slot27(buffer), 27u);
  EXPECT_EQ(foreign->Slot28(nullptr), 28u);
  EXPECT_EQ(foreign->Slot29(1, tree, "p", "n", nullptr), 29u);
  EXPECT_FALSE(destroyed);
  delete foreign;
  EXPECT_TRUE(destroyed);
}

}  // namespace
}  // namespace tamu::registry
