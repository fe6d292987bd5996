// The stand-in firmware. The boot-services table holds EFIAPI functions that
// reach the firmware through a process-wide pointer to the current instance,
// exactly as a driver image reaches real firmware through its system table.
//
// Decisions of this stand-in:
// - A handle is the address of a private record; handles are kept in the
//   order they were created, and LocateHandleBuffer lists them in that order.
// - Failure injection applies to the services as the driver calls them through
//   the table; the C++ API used by the environment itself never fails.
// - Services the driver does not use return EFI_UNSUPPORTED.
// - Freeing a pointer that is not a live pool block is refused with
//   EFI_INVALID_PARAMETER and counted (BadFrees), never a crash.
// - ConsoleLines drops the "\r" before each "\n" and the empty piece after a
//   final "\n".
#include "env/host/firmware.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

namespace env {

namespace {

Firmware *gCurrent = nullptr;
std::vector<Firmware *> gAlive;

bool SameGuid (const EFI_GUID &A, const EFI_GUID &B) { return std::memcmp (&A, &B, sizeof (EFI_GUID)) == 0; }

// UTF-16 (with surrogate pairs) to UTF-8.
void AppendUtf8 (std::string &Out, const CHAR16 *Text) {
  for (size_t I = 0; Text[I] != 0; I++) {
    uint32_t C = Text[I];
    if (C >= 0xD800 && C < 0xDC00 && Text[I + 1] >= 0xDC00 && Text[I + 1] < 0xE000) {
      C = 0x10000 + ((C - 0xD800) << 10) + (Text[I + 1] - 0xDC00);
      I++;
    }
    if (C < 0x80) {
      Out += static_cast<char> (C);
    } else if (C < 0x800) {
      Out += static_cast<char> (0xC0 | (C >> 6));
      Out += static_cast<char> (0x80 | (C & 0x3F));
    } else if (C < 0x10000) {
      Out += static_cast<char> (0xE0 | (C >> 12));
      Out += static_cast<char> (0x80 | ((C >> 6) & 0x3F));
      Out += static_cast<char> (0x80 | (C & 0x3F));
    } else {
      Out += static_cast<char> (0xF0 | (C >> 18));
      Out += static_cast<char> (0x80 | ((C >> 12) & 0x3F));
      Out += static_cast<char> (0x80 | ((C >> 6) & 0x3F));
      Out += static_cast<char> (0x80 | (C & 0x3F));
    }
  }
}

}  // namespace

struct Firmware::State {
  struct Protocol {
    EFI_GUID Guid;
    VOID *Interface;
  };
  struct HandleRecord {
    std::vector<Protocol> Protocols;
  };
  struct Failure {
    bool Active = false;
    EFI_STATUS Status = EFI_SUCCESS;
    unsigned Count = 0;
    unsigned Skip = 0;
  };

  EFI_SYSTEM_TABLE St {};
  EFI_BOOT_SERVICES Bs {};
  EFI_RUNTIME_SERVICES Rt {};
  SIMPLE_TEXT_OUTPUT_INTERFACE ConOut {};
  SIMPLE_TEXT_OUTPUT_MODE ConOutMode {};
  std::string Console;

  std::vector<std::unique_ptr<HandleRecord>> Handles;  // creation order
  std::map<const VOID *, size_t> Pool;
  size_t PoolBytes = 0;
  size_t BadFrees = 0;
  std::map<EFI_HANDLE, std::unique_ptr<EFI_LOADED_IMAGE>> Images;
  std::map<BootService, Failure> Failures;

  HandleRecord *Find (EFI_HANDLE Handle) {
    for (auto &H : Handles)
      if (H.get () == Handle) return H.get ();
    return nullptr;
  }
  void RemoveHandle (EFI_HANDLE Handle) {
    Handles.erase (std::remove_if (Handles.begin (), Handles.end (),
                                   [Handle] (const std::unique_ptr<HandleRecord> &H) { return H.get () == Handle; }),
                   Handles.end ());
  }
  // True when the next call of Service is to fail; Status receives the code.
  bool ShouldFail (BootService Service, EFI_STATUS &Status) {
    auto It = Failures.find (Service);
    if (It == Failures.end () || !It->second.Active) return false;
    Failure &F = It->second;
    if (F.Skip > 0) {
      F.Skip--;
      return false;
    }
    Status = F.Status;
    if (F.Count > 0 && --F.Count == 0) F.Active = false;
    return true;
  }
};

// ---------------------------------------------------------------- the table

namespace {

Firmware &Fw () { return *gCurrent; }

EFI_STATUS EFIAPI UnsupportedService () { return EFI_UNSUPPORTED; }

EFI_STATUS EFIAPI BsAllocatePool (EFI_MEMORY_TYPE, UINTN Size, VOID **Buffer);
EFI_STATUS EFIAPI BsFreePool (VOID *Buffer);
EFI_STATUS EFIAPI BsInstallProtocolInterface (EFI_HANDLE *Handle, EFI_GUID *Protocol, EFI_INTERFACE_TYPE Type,
                                              VOID *Interface);
EFI_STATUS EFIAPI BsUninstallProtocolInterface (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID *Interface);
EFI_STATUS EFIAPI BsHandleProtocol (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID **Interface);
EFI_STATUS EFIAPI BsOpenProtocol (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID **Interface, EFI_HANDLE Agent,
                                  EFI_HANDLE Controller, UINT32 Attributes);
EFI_STATUS EFIAPI BsLocateHandleBuffer (EFI_LOCATE_SEARCH_TYPE SearchType, EFI_GUID *Protocol, VOID *SearchKey,
                                        UINTN *NoHandles, EFI_HANDLE **Buffer);
EFI_STATUS EFIAPI ConOutputString (SIMPLE_TEXT_OUTPUT_INTERFACE *This, CHAR16 *String);

}  // namespace

// Access for the table functions (they are not members).
struct FirmwareAccess {
  using StateType = Firmware::State;
  using HandleRecord = Firmware::State::HandleRecord;
  static StateType &Of (Firmware &F) { return *F.State_; }
};

namespace {

FirmwareAccess::StateType &St () { return FirmwareAccess::Of (Fw ()); }

EFI_STATUS EFIAPI BsAllocatePool (EFI_MEMORY_TYPE, UINTN Size, VOID **Buffer) {
  if (Buffer == nullptr) return EFI_INVALID_PARAMETER;
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::AllocatePool, Status)) {
    *Buffer = nullptr;
    return Status;
  }
  *Buffer = Fw ().AllocatePool (Size);
  return *Buffer != nullptr ? EFI_SUCCESS : EFI_OUT_OF_RESOURCES;
}

EFI_STATUS EFIAPI BsFreePool (VOID *Buffer) {
  if (Buffer == nullptr || St ().Pool.count (Buffer) == 0) {
    St ().BadFrees++;
    return EFI_INVALID_PARAMETER;
  }
  Fw ().FreePool (Buffer);
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI BsInstallProtocolInterface (EFI_HANDLE *Handle, EFI_GUID *Protocol, EFI_INTERFACE_TYPE Type,
                                              VOID *Interface) {
  if (Handle == nullptr || Protocol == nullptr || Type != EFI_NATIVE_INTERFACE) return EFI_INVALID_PARAMETER;
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::InstallProtocolInterface, Status)) return Status;
  return Fw ().InstallProtocol (Handle, *Protocol, Interface);
}

EFI_STATUS EFIAPI BsUninstallProtocolInterface (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID *Interface) {
  if (Protocol == nullptr) return EFI_INVALID_PARAMETER;
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::UninstallProtocolInterface, Status)) return Status;
  return Fw ().UninstallProtocol (Handle, *Protocol, Interface);
}

EFI_STATUS LookUp (EFI_HANDLE Handle, const EFI_GUID *Protocol, VOID **Interface) {
  if (Protocol == nullptr || Interface == nullptr) return EFI_INVALID_PARAMETER;
  *Interface = nullptr;
  FirmwareAccess::HandleRecord *Record = St ().Find (Handle);
  if (Record == nullptr) return EFI_INVALID_PARAMETER;
  for (auto &P : Record->Protocols)
    if (SameGuid (P.Guid, *Protocol)) {
      *Interface = P.Interface;
      return EFI_SUCCESS;
    }
  return EFI_UNSUPPORTED;
}

EFI_STATUS EFIAPI BsHandleProtocol (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID **Interface) {
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::HandleProtocol, Status)) return Status;
  return LookUp (Handle, Protocol, Interface);
}

EFI_STATUS EFIAPI BsOpenProtocol (EFI_HANDLE Handle, EFI_GUID *Protocol, VOID **Interface, EFI_HANDLE Agent,
                                  EFI_HANDLE Controller, UINT32 Attributes) {
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::OpenProtocol, Status)) return Status;
  // Only the get-protocol mode is offered; it needs neither agent nor controller.
  if (Attributes != EFI_OPEN_PROTOCOL_GET_PROTOCOL) return EFI_UNSUPPORTED;
  return LookUp (Handle, Protocol, Interface);
}

EFI_STATUS EFIAPI BsLocateHandleBuffer (EFI_LOCATE_SEARCH_TYPE SearchType, EFI_GUID *Protocol, VOID *,
                                        UINTN *NoHandles, EFI_HANDLE **Buffer) {
  if (NoHandles == nullptr || Buffer == nullptr) return EFI_INVALID_PARAMETER;
  *NoHandles = 0;
  *Buffer = nullptr;
  EFI_STATUS Status;
  if (St ().ShouldFail (BootService::LocateHandleBuffer, Status)) return Status;
  if (SearchType != ByProtocol) return EFI_UNSUPPORTED;
  if (Protocol == nullptr) return EFI_INVALID_PARAMETER;
  std::vector<EFI_HANDLE> Found = Fw ().HandlesWith (*Protocol);
  if (Found.empty ()) return EFI_NOT_FOUND;
  auto *Out = static_cast<EFI_HANDLE *> (Fw ().AllocatePool (Found.size () * sizeof (EFI_HANDLE)));
  if (Out == nullptr) return EFI_OUT_OF_RESOURCES;
  std::copy (Found.begin (), Found.end (), Out);
  *NoHandles = Found.size ();
  *Buffer = Out;
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI ConOutputString (SIMPLE_TEXT_OUTPUT_INTERFACE *, CHAR16 *String) {
  if (String == nullptr) return EFI_INVALID_PARAMETER;
  AppendUtf8 (St ().Console, String);
  return EFI_SUCCESS;
}

template <typename Table>
void FillUnsupported (Table &T) {
  // Every slot after the header is a function pointer.
  auto *Slot = reinterpret_cast<VOID **> (reinterpret_cast<UINT8 *> (&T) + sizeof (EFI_TABLE_HEADER));
  auto *End = reinterpret_cast<VOID **> (reinterpret_cast<UINT8 *> (&T) + sizeof (T));
  for (; Slot < End; Slot++) *Slot = reinterpret_cast<VOID *> (&UnsupportedService);
}

}  // namespace

// ------------------------------------------------------------- the instance

Firmware::Firmware () : State_ (new State) {
  State &S = *State_;
  FillUnsupported (S.Bs);
  S.Bs.Hdr.Signature = EFI_BOOT_SERVICES_SIGNATURE;
  S.Bs.Hdr.Revision = EFI_BOOT_SERVICES_REVISION;
  S.Bs.Hdr.HeaderSize = sizeof (EFI_BOOT_SERVICES);
  S.Bs.AllocatePool = &BsAllocatePool;
  S.Bs.FreePool = &BsFreePool;
  S.Bs.InstallProtocolInterface = &BsInstallProtocolInterface;
  S.Bs.UninstallProtocolInterface = &BsUninstallProtocolInterface;
  S.Bs.HandleProtocol = &BsHandleProtocol;
  S.Bs.OpenProtocol = &BsOpenProtocol;
  S.Bs.LocateHandleBuffer = &BsLocateHandleBuffer;

  FillUnsupported (S.Rt);
  S.Rt.Hdr.Signature = EFI_RUNTIME_SERVICES_SIGNATURE;
  S.Rt.Hdr.HeaderSize = sizeof (EFI_RUNTIME_SERVICES);

  auto *ConSlots = reinterpret_cast<VOID **> (&S.ConOut);
  for (size_t I = 0; I < offsetof (SIMPLE_TEXT_OUTPUT_INTERFACE, Mode) / sizeof (VOID *); I++)
    ConSlots[I] = reinterpret_cast<VOID *> (&UnsupportedService);
  S.ConOut.OutputString = &ConOutputString;
  S.ConOut.Mode = &S.ConOutMode;
  S.ConOutMode.MaxMode = 1;

  S.St.Hdr.Signature = EFI_SYSTEM_TABLE_SIGNATURE;
  S.St.Hdr.Revision = EFI_SYSTEM_TABLE_REVISION;
  S.St.Hdr.HeaderSize = sizeof (EFI_SYSTEM_TABLE);
  S.St.ConOut = &S.ConOut;
  S.St.StdErr = &S.ConOut;
  S.St.BootServices = &S.Bs;
  S.St.RuntimeServices = &S.Rt;

  gAlive.push_back (this);
  gCurrent = this;
}

Firmware::~Firmware () {
  for (auto &Block : State_->Pool) std::free (const_cast<VOID *> (Block.first));
  gAlive.erase (std::remove (gAlive.begin (), gAlive.end (), this), gAlive.end ());
  gCurrent = gAlive.empty () ? nullptr : gAlive.back ();
}

EFI_SYSTEM_TABLE *Firmware::SystemTable () { return &State_->St; }
EFI_BOOT_SERVICES *Firmware::BootServices () { return &State_->Bs; }

EFI_STATUS Firmware::InstallProtocol (EFI_HANDLE *Handle, const EFI_GUID &Guid, VOID *Interface) {
  if (Handle == nullptr) return EFI_INVALID_PARAMETER;
  State::HandleRecord *Record;
  if (*Handle == nullptr) {
    State_->Handles.push_back (std::make_unique<State::HandleRecord> ());
    Record = State_->Handles.back ().get ();
    Record->Protocols.push_back ({Guid, Interface});
    *Handle = Record;
    return EFI_SUCCESS;
  }
  Record = State_->Find (*Handle);
  if (Record == nullptr) return EFI_INVALID_PARAMETER;
  for (auto &P : Record->Protocols)
    if (SameGuid (P.Guid, Guid)) return EFI_INVALID_PARAMETER;
  Record->Protocols.push_back ({Guid, Interface});
  return EFI_SUCCESS;
}

EFI_STATUS Firmware::UninstallProtocol (EFI_HANDLE Handle, const EFI_GUID &Guid, VOID *Interface) {
  State::HandleRecord *Record = State_->Find (Handle);
  if (Record == nullptr) return EFI_INVALID_PARAMETER;
  auto &List = Record->Protocols;
  for (auto It = List.begin (); It != List.end (); ++It)
    if (SameGuid (It->Guid, Guid) && It->Interface == Interface) {
      List.erase (It);
      // A handle without protocols no longer exists.
      if (List.empty () && State_->Images.count (Handle) == 0) State_->RemoveHandle (Handle);
      return EFI_SUCCESS;
    }
  return EFI_NOT_FOUND;
}

std::vector<EFI_HANDLE> Firmware::HandlesWith (const EFI_GUID &Guid) const {
  std::vector<EFI_HANDLE> Found;
  for (auto &H : State_->Handles)
    for (auto &P : H->Protocols)
      if (SameGuid (P.Guid, Guid)) {
        Found.push_back (H.get ());
        break;
      }
  return Found;
}

VOID *Firmware::FindProtocol (const EFI_GUID &Guid) const {
  for (auto &H : State_->Handles)
    for (auto &P : H->Protocols)
      if (SameGuid (P.Guid, Guid)) return P.Interface;
  return nullptr;
}

VOID *Firmware::AllocatePool (UINTN Size) {
  // Zero-sized requests still get a distinct block.
  VOID *Buffer = std::malloc (Size == 0 ? 1 : Size);
  if (Buffer == nullptr) return nullptr;
  State_->Pool[Buffer] = Size;
  State_->PoolBytes += Size;
  return Buffer;
}

VOID Firmware::FreePool (VOID *Buffer) {
  auto It = State_->Pool.find (Buffer);
  if (It == State_->Pool.end ()) {
    if (Buffer != nullptr) State_->BadFrees++;
    return;
  }
  State_->PoolBytes -= It->second;
  State_->Pool.erase (It);
  std::free (Buffer);
}

size_t Firmware::LiveAllocations () const { return State_->Pool.size (); }
size_t Firmware::LiveBytes () const { return State_->PoolBytes; }
size_t Firmware::BadFrees () const { return State_->BadFrees; }

size_t Firmware::BlockSize (const VOID *Buffer) const {
  auto It = State_->Pool.find (Buffer);
  return It == State_->Pool.end () ? 0 : It->second;
}

void Firmware::FailService (BootService Service, EFI_STATUS Status, unsigned Count, unsigned Skip) {
  State_->Failures[Service] = State::Failure {true, Status, Count, Skip};
}

void Firmware::ClearFailures () { State_->Failures.clear (); }

const std::string &Firmware::ConsoleText () const { return State_->Console; }

std::vector<std::string> Firmware::ConsoleLines () const {
  std::vector<std::string> Lines;
  const std::string &Text = State_->Console;
  size_t Start = 0;
  while (Start < Text.size ()) {
    size_t End = Text.find ('\n', Start);
    std::string Line = Text.substr (Start, End == std::string::npos ? std::string::npos : End - Start);
    if (!Line.empty () && Line.back () == '\r') Line.pop_back ();
    Lines.push_back (Line);
    if (End == std::string::npos) break;
    Start = End + 1;
  }
  return Lines;
}

void Firmware::ClearConsole () { State_->Console.clear (); }
void Firmware::AppendConsole (const std::string &Text) { State_->Console += Text; }

EFI_STATUS Firmware::LoadImage (EFI_IMAGE_ENTRY_POINT EntryPoint, EFI_HANDLE *ImageHandle) {
  if (EntryPoint == nullptr || ImageHandle == nullptr) return EFI_INVALID_PARAMETER;
  auto Image = std::make_unique<EFI_LOADED_IMAGE> ();
  std::memset (Image.get (), 0, sizeof (EFI_LOADED_IMAGE));
  Image->Revision = EFI_LOADED_IMAGE_PROTOCOL_REVISION;
  Image->SystemTable = &State_->St;
  Image->ImageBase = reinterpret_cast<VOID *> (EntryPoint);
  Image->ImageCodeType = EfiBootServicesCode;
  Image->ImageDataType = EfiBootServicesData;
  const EFI_GUID LoadedImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
  EFI_HANDLE Handle = nullptr;
  InstallProtocol (&Handle, LoadedImageGuid, Image.get ());
  State_->Images[Handle] = std::move (Image);

  // The entry point may load further images: the firmware it runs in is this one.
  Firmware *Previous = gCurrent;
  gCurrent = this;
  EFI_STATUS Status = EntryPoint (Handle, &State_->St);
  gCurrent = Previous != nullptr ? Previous : this;
  if (EFI_ERROR (Status)) {
    State_->Images.erase (Handle);
    State_->RemoveHandle (Handle);
    *ImageHandle = nullptr;
    return Status;
  }
  *ImageHandle = Handle;
  return Status;
}

EFI_STATUS Firmware::UnloadImage (EFI_HANDLE ImageHandle) {
  auto It = State_->Images.find (ImageHandle);
  if (It == State_->Images.end ()) return EFI_INVALID_PARAMETER;
  if (It->second->Unload == nullptr) return EFI_UNSUPPORTED;
  Firmware *Previous = gCurrent;
  gCurrent = this;
  EFI_STATUS Status = It->second->Unload (ImageHandle);
  gCurrent = Previous != nullptr ? Previous : this;
  if (EFI_ERROR (Status)) return Status;
  State_->Images.erase (ImageHandle);
  State_->RemoveHandle (ImageHandle);
  return Status;
}

Firmware &CurrentFirmware () {
  if (gCurrent == nullptr) std::abort ();
  return *gCurrent;
}

}  // namespace env
