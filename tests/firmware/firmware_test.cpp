// The stand-in firmware as a driver sees it through its tables.
#include <gtest/gtest.h>

#include "env/host/firmware.h"

namespace {

const EFI_GUID kGuidA = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};
const EFI_GUID kGuidB = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 9}};

TEST (Firmware, HandleDatabase) {
  env::Firmware Fw;
  EFI_BOOT_SERVICES *Bs = Fw.BootServices ();
  int InterfaceA = 0, InterfaceB = 0;
  EFI_GUID A = kGuidA, B = kGuidB;

  EFI_HANDLE First = nullptr;
  ASSERT_EQ (Bs->InstallProtocolInterface (&First, &A, EFI_NATIVE_INTERFACE, &InterfaceA), EFI_SUCCESS);
  ASSERT_NE (First, nullptr);
  EXPECT_EQ (Bs->InstallProtocolInterface (&First, &B, EFI_NATIVE_INTERFACE, &InterfaceB), EFI_SUCCESS);
  EXPECT_NE (Bs->InstallProtocolInterface (&First, &A, EFI_NATIVE_INTERFACE, &InterfaceB), EFI_SUCCESS);
  EFI_HANDLE Second = nullptr;
  ASSERT_EQ (Bs->InstallProtocolInterface (&Second, &A, EFI_NATIVE_INTERFACE, &InterfaceB), EFI_SUCCESS);
  EXPECT_NE (Second, First);

  UINTN Count = 0;
  EFI_HANDLE *Handles = nullptr;
  ASSERT_EQ (Bs->LocateHandleBuffer (ByProtocol, &A, nullptr, &Count, &Handles), EFI_SUCCESS);
  EXPECT_EQ (std::vector<EFI_HANDLE> (Handles, Handles + Count), (std::vector<EFI_HANDLE> {First, Second}));
  EXPECT_TRUE (Fw.LiveAllocations () == 1 && Fw.BlockSize (Handles) == 2 * sizeof (EFI_HANDLE));
  EXPECT_EQ (Bs->FreePool (Handles), EFI_SUCCESS);
  EXPECT_EQ (Fw.LiveAllocations (), 0u);
  EFI_GUID Unknown = {1, 2, 3, {0}};
  EXPECT_EQ (Bs->LocateHandleBuffer (ByProtocol, &Unknown, nullptr, &Count, &Handles), EFI_NOT_FOUND);
  EXPECT_TRUE (Count == 0 && Handles == nullptr);

  VOID *Found = nullptr;
  EXPECT_EQ (Bs->OpenProtocol (First, &B, &Found, First, nullptr, EFI_OPEN_PROTOCOL_GET_PROTOCOL), EFI_SUCCESS);
  EXPECT_EQ (Found, &InterfaceB);
  EXPECT_TRUE (Bs->HandleProtocol (Second, &A, &Found) == EFI_SUCCESS && Found == &InterfaceB);
  EXPECT_TRUE (Bs->HandleProtocol (Second, &B, &Found) == EFI_UNSUPPORTED && Found == nullptr);

  // Uninstalling needs the right interface; the last protocol takes the handle with it.
  EXPECT_EQ (Bs->UninstallProtocolInterface (Second, &A, &InterfaceA), EFI_NOT_FOUND);
  EXPECT_EQ (Bs->UninstallProtocolInterface (Second, &A, &InterfaceB), EFI_SUCCESS);
  EXPECT_EQ (Fw.HandlesWith (A), std::vector<EFI_HANDLE> {First});
  EXPECT_EQ (Bs->HandleProtocol (Second, &A, &Found), EFI_INVALID_PARAMETER);
  EXPECT_EQ (Fw.FindProtocol (B), &InterfaceB);

  // Services the driver does not use answer "unsupported".
  EXPECT_EQ (Bs->Stall (10), EFI_UNSUPPORTED);
}

TEST (Firmware, PoolAccountingFailuresAndTheConsole) {
  env::Firmware Fw;
  EFI_BOOT_SERVICES *Bs = Fw.BootServices ();
  VOID *One = nullptr, *Two = nullptr;
  ASSERT_EQ (Bs->AllocatePool (EfiBootServicesData, 100, &One), EFI_SUCCESS);
  ASSERT_EQ (Bs->AllocatePool (EfiBootServicesData, 28, &Two), EFI_SUCCESS);
  // One past the start of a block is no block.
  EXPECT_EQ ((std::vector<size_t> {Fw.LiveAllocations (), Fw.LiveBytes (), Fw.BlockSize (One),
                                   Fw.BlockSize (static_cast<UINT8 *> (One) + 1)}),
             (std::vector<size_t> {2, 128, 100, 0}));
  EXPECT_EQ (Bs->FreePool (One), EFI_SUCCESS);
  EXPECT_EQ (Bs->FreePool (One), EFI_INVALID_PARAMETER);  // twice: refused and counted
  EXPECT_TRUE (Fw.BadFrees () == 1 && Fw.LiveBytes () == 28);

  // Two calls succeed, then two fail, then it works again.
  Fw.FailService (env::BootService::AllocatePool, EFI_OUT_OF_RESOURCES, 2, 2);
  VOID *P[5] = {};
  std::vector<EFI_STATUS> Status;
  for (int I = 0; I < 5; I++) Status.push_back (Bs->AllocatePool (EfiBootServicesData, 8, &P[I]));
  EXPECT_EQ (Status, (std::vector<EFI_STATUS> {EFI_SUCCESS, EFI_SUCCESS, EFI_OUT_OF_RESOURCES, EFI_OUT_OF_RESOURCES, EFI_SUCCESS}));
  EXPECT_EQ (P[2], nullptr);
  // Count 0: every call until cleared.
  Fw.FailService (env::BootService::HandleProtocol, EFI_DEVICE_ERROR, 0);
  EFI_GUID A = kGuidA;
  VOID *Found;
  for (int I = 0; I < 3; I++) EXPECT_EQ (Bs->HandleProtocol (nullptr, &A, &Found), EFI_DEVICE_ERROR);
  Fw.ClearFailures ();
  EXPECT_EQ (Bs->HandleProtocol (nullptr, &A, &Found), EFI_INVALID_PARAMETER);

  // The console records UTF-16 as UTF-8 lines.
  SIMPLE_TEXT_OUTPUT_INTERFACE *Out = Fw.SystemTable ()->ConOut;
  CHAR16 First[] = {'o', 'n', 'e', '\r', '\n', 't', 'w', 0};
  CHAR16 Second[] = {'o', 0x00E9, 0x4E2D, 0xD83D, 0xDE00, '\r', '\n', 0};
  Out->OutputString (Out, First);
  Out->OutputString (Out, Second);
  EXPECT_EQ (Fw.ConsoleText (), "one\r\ntwo\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\r\n");
  EXPECT_EQ (Fw.ConsoleLines (), (std::vector<std::string> {"one", "two\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"}));
  Fw.ClearConsole ();
  EXPECT_TRUE (Fw.ConsoleLines ().empty ());
}

// A tiny image: records what it was given and registers an unload handler
// whose answer the test chooses.
EFI_HANDLE gSeenHandle;
EFI_STATUS gEntryAnswer, gUnloadAnswer;
int gUnloadCalls;

EFI_STATUS EFIAPI TestUnload (EFI_HANDLE Image) {
  gUnloadCalls++;
  return gUnloadAnswer;
}

EFI_STATUS EFIAPI TestEntry (EFI_HANDLE Image, EFI_SYSTEM_TABLE *St) {
  gSeenHandle = Image;
  EFI_GUID LoadedGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
  EFI_LOADED_IMAGE *Loaded = nullptr;
  if (EFI_ERROR (St->BootServices->HandleProtocol (Image, &LoadedGuid, reinterpret_cast<VOID **> (&Loaded))))
    return EFI_ABORTED;
  if (Loaded->SystemTable != St) return EFI_ABORTED;
  Loaded->Unload = TestUnload;
  return gEntryAnswer;
}

TEST (Firmware, LoadsAndUnloadsImages) {
  env::Firmware Fw;
  EXPECT_EQ (&env::CurrentFirmware (), &Fw);
  EFI_GUID LoadedGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;

  gEntryAnswer = EFI_LOAD_ERROR;
  EFI_HANDLE Image = reinterpret_cast<EFI_HANDLE> (1);
  EXPECT_EQ (Fw.LoadImage (TestEntry, &Image), EFI_LOAD_ERROR);
  EXPECT_EQ (Image, nullptr);
  EXPECT_TRUE (Fw.HandlesWith (LoadedGuid).empty ());  // a failed image leaves no handle

  gEntryAnswer = EFI_SUCCESS;
  ASSERT_EQ (Fw.LoadImage (TestEntry, &Image), EFI_SUCCESS);
  EXPECT_EQ (Image, gSeenHandle);
  EXPECT_EQ (Fw.HandlesWith (LoadedGuid).size (), 1u);

  gUnloadAnswer = EFI_ACCESS_DENIED;
  EXPECT_EQ (Fw.UnloadImage (Image), EFI_ACCESS_DENIED);
  EXPECT_EQ (Fw.HandlesWith (LoadedGuid).size (), 1u);  // refused: still loaded
  gUnloadAnswer = EFI_SUCCESS;
  EXPECT_EQ (Fw.UnloadImage (Image), EFI_SUCCESS);
  EXPECT_TRUE (gUnloadCalls == 2 && Fw.HandlesWith (LoadedGuid).empty ());
  EXPECT_EQ (Fw.UnloadImage (Image), EFI_INVALID_PARAMETER);

  {
    env::Firmware Inner;  // the most recent live firmware is the current one
    EXPECT_EQ (&env::CurrentFirmware (), &Inner);
  }
  EXPECT_EQ (&env::CurrentFirmware (), &Fw);
}

}  // namespace
