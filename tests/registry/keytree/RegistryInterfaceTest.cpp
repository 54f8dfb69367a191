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
  EXPECT_EQ(kNo, base.Initialize("p"));
  EXPECT_EQ(kNo, base.Finalize());
  EXPECT_EQ(kNo, base.Walk(1, tree, "p", nullptr));
  EXPECT_EQ(kNo, base.CreateKey(1, tree, "p", 0, false));
  EXPECT_EQ(kNo, base.DeleteKey(1, tree, "p"));
  EXPECT_EQ(kNo, base.FindKey(1, tree, "p", 0));
  EXPECT_EQ(kNo, base.GetKeyInfo(1, tree, "p", nullptr));
  EXPECT_EQ(kNo, base.GetDefaultValue(1, tree, "p", nullptr));
  EXPECT_EQ(kNo, base.SetDefaultValue(1, tree, "p", 0, false));
  EXPECT_EQ(kNo, base.GetValue(1, tree, "p", "n", nullptr));
  EXPECT_EQ(kNo, base.SetValue(1, tree, "p", "n", nullptr));
  EXPECT_EQ(kNo, base.LoadKeyTree("p", tree));
  EXPECT_EQ(kNo, base.UnloadKeyTree(tree));
  EXPECT_EQ(kNo, base.LoadKey("p", nullptr));
  EXPECT_EQ(kNo, base.StoreKey(nullptr));
  EXPECT_EQ(kNo, base.BackupKeyTree(1, tree, "p", "f"));
  EXPECT_EQ(kNo, base.RestoreKeyTree(1, tree, "p", "f"));
  EXPECT_EQ(kNo, base.CreateValue(1, tree, "p", "n", 0, false));
  EXPECT_EQ(kNo, base.CreateValue(1, tree, "p", "n", nullptr));
  EXPECT_EQ(kNo, base.DeleteValue(1, tree, "p", "n"));
  EXPECT_EQ(kNo, base.GetSetValue(1, tree, "p", "n", nullptr, false));
  EXPECT_EQ(kNo, base.ListKeys(1, tree, "p", 0, nullptr, 0));
  EXPECT_EQ(kNo, base.ListValues(1, tree, "p", 0, nullptr));
  EXPECT_EQ(kNo, base.SetKeyPermission(1, tree, "p", 0));
  EXPECT_EQ(kNo, base.GetKeyPermission(1, tree, "p", nullptr));
  EXPECT_EQ(kNo, base.SetKeyWatch(1, tree, "p", 0));
  EXPECT_EQ(kNo, base.GetChangeBuffer(buffer));
  EXPECT_EQ(kNo, base.GetRegistryInfo(nullptr));
  EXPECT_EQ(kNo, base.GetValueOffset(1, tree, "p", "n", nullptr));
  EXPECT_EQ(nullptr, tree);
  EXPECT_EQ(nullptr, buffer);
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
  EXPECT_EQ(2u, foreign->Slot2("p"));
  EXPECT_EQ(3u, foreign->Slot3());
  EXPECT_EQ(4u, foreign->Slot4(1, tree, "p", 0, false));
  EXPECT_EQ(5u, foreign->Slot5(1, tree, "p"));
  EXPECT_EQ(6u, foreign->Slot6(1, tree, "p", 0));
  EXPECT_EQ(7u, foreign->Slot7(1, tree, "p", nullptr));
  EXPECT_EQ(8u, foreign->Slot8(1, tree, "p", nullptr));
  EXPECT_EQ(9u, foreign->Slot9(1, tree, "p", 0, false));
  EXPECT_EQ(10u, foreign->Slot10(1, tree, "p", "n", nullptr));
  EXPECT_EQ(11u, foreign->Slot11(1, tree, "p", "n", nullptr));
  EXPECT_EQ(12u, foreign->Slot12("p", tree));
  EXPECT_EQ(13u, foreign->Slot13(tree));
  EXPECT_EQ(14u, foreign->Slot14("p", nullptr));
  EXPECT_EQ(15u, foreign->Slot15(nullptr));
  EXPECT_EQ(16u, foreign->Slot16(1, tree, "p", "f"));
  EXPECT_EQ(17u, foreign->Slot17(1, tree, "p", "f"));
  EXPECT_EQ(18u, foreign->Slot18(1, tree, "p", "n", 0, false));
  EXPECT_EQ(19u, foreign->Slot19(1, tree, "p", "n", nullptr));
  EXPECT_EQ(20u, foreign->Slot20(1, tree, "p", "n"));
  EXPECT_EQ(21u, foreign->Slot21(1, tree, "p", "n", nullptr, false));
  EXPECT_EQ(22u, foreign->Slot22(1, tree, "p", 0, nullptr, 0));
  EXPECT_EQ(23u, foreign->Slot23(1, tree, "p", 0, nullptr));
  EXPECT_EQ(24u, foreign->Slot24(1, tree, "p", 0));
  EXPECT_EQ(25u, foreign->Slot25(1, tree, "p", nullptr));
  EXPECT_EQ(26u, foreign->Slot26(1, tree, "p", 0));
  EXPECT_EQ(27u, foreign->Slot27(buffer));
  EXPECT_EQ(28u, foreign->Slot28(nullptr));
  EXPECT_EQ(29u, foreign->Slot29(1, tree, "p", "n", nullptr));
  EXPECT_FALSE(destroyed);
  delete foreign;
  EXPECT_TRUE(destroyed);
}

}  // namespace
}  // namespace tamu::registry
