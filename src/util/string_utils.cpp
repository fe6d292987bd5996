// 8-bit string, number and path helpers. None of them allocates; lengths are
// UINT16 byte counts; a byte of 0x80 or more starts a two-byte GBK character
// where characters matter (AppendFitted).
#include "util/string_utils.h"

namespace {

// Longest path SplitPath accepts, and the room of its directory buffer.
constexpr UINT16 SPLIT_PATH_MAX = 1024;
constexpr UINT16 SPLIT_DIRECTORY_SIZE = 512;
// GroupThousands builds its result here.
constexpr UINT16 GROUP_BUFFER_SIZE = 64;
// ParseDecimal and ParseHex look at no more than this many characters.
constexpr UINT16 PARSE_MAX_CHARACTERS = 16;

UINT8 Upper (UINT8 C) { return (C >= 'a' && C <= 'z') ? static_cast<UINT8> (C - 'a' + 'A') : C; }

// Parses digits of the given radix; any other character before the
// terminator (within the first 16) makes the whole value 0.
UINT32 ParseDigits (const CHAR8 *String, UINT32 Radix) {
  if (String == nullptr) return 0;
  UINT32 Value = 0;
  for (UINT16 I = 0; I < PARSE_MAX_CHARACTERS; I++) {
    UINT8 C = String[I];
    if (C == 0) break;
    UINT32 Digit;
    if (C >= '0' && C <= '9')
      Digit = C - '0';
    else if (Radix == 16 && C >= 'a' && C <= 'f')
      Digit = C - 'a' + 10;
    else if (Radix == 16 && C >= 'A' && C <= 'F')
      Digit = C - 'A' + 10;
    else
      return 0;
    Value = Value * Radix + Digit;
  }
  return Value;
}

}  // namespace

UINT16 StringLength (const CHAR8 *String) {
  UINT16 N = 0;
  for (UINTN I = 0; String[I] != 0; I++) N++;
  return N;
}

VOID CopyString (CHAR8 *Destination, const CHAR8 *Source) {
  UINTN I = 0;
  do {
    Destination[I] = Source[I];
  } while (Source[I++] != 0);
}

VOID CopyStringN (CHAR8 *Destination, const CHAR8 *Source, UINT16 Size) {
  if (Size == 0) return;
  UINT16 I = 0;
  for (; I < Size - 1 && Source[I] != 0; I++) Destination[I] = Source[I];
  Destination[I] = 0;
}

UINT16 AppendString (CHAR8 *Destination, const CHAR8 *Source) {
  UINT16 Length = StringLength (Destination);
  CopyString (Destination + Length, Source);
  return StringLength (Destination);
}

UINT16 AppendStringN (CHAR8 *Destination, const CHAR8 *Source, UINT16 Size) {
  UINT16 Length = StringLength (Destination);
  if (Size == 0 || Length >= Size - 1) return Length;
  CopyStringN (Destination + Length, Source, static_cast<UINT16> (Size - Length));
  return StringLength (Destination);
}

BOOLEAN StringsEqual (const CHAR8 *A, const CHAR8 *B) {
  UINTN I = 0;
  for (; A[I] != 0 && B[I] != 0; I++)
    if (A[I] != B[I]) return FALSE;
  return A[I] == B[I];
}

BOOLEAN NamesEqual (const CHAR8 *A, const CHAR8 *B) {
  UINT16 Length = StringLength (A);
  if (Length != StringLength (B)) return FALSE;
  for (UINT16 I = 0; I < Length; I++)
    if (Upper (A[I]) != Upper (B[I])) return FALSE;
  return TRUE;
}

INTN CompareNames (const CHAR8 *A, const CHAR8 *B) {
  for (UINTN I = 0;; I++) {
    UINT8 X = Upper (A[I]), Y = Upper (B[I]);
    if (X != Y || X == 0) return (INTN)X - (INTN)Y;
  }
}

VOID AppendFitted (CHAR8 *Destination, const CHAR8 *Source, UINT16 Limit) {
  UINT16 D = StringLength (Destination);
  UINT16 S = StringLength (Source);
  if (Limit <= D) return;
  UINT16 Room = static_cast<UINT16> (Limit - D - 1);
  CHAR8 *Out = Destination + D;

  if (S < Room) {
    CopyString (Out, Source);
    return;
  }
  if (Room <= 5) {
    for (UINT16 I = 0; I < Room; I++) Out[I] = Source[I];
    Out[Room] = 0;
    return;
  }

  // Head: whole characters while fewer than H bytes are copied (may end at H + 1).
  UINT16 Half = static_cast<UINT16> ((Room - 3) / 2);
  UINT16 K = 0;
  while (K < Half) {
    if (Source[K] >= 0x80 && Source[K + 1] != 0) {
      Out[K] = Source[K];
      Out[K + 1] = Source[K + 1];
      K = static_cast<UINT16> (K + 2);
    } else {
      Out[K] = Source[K];
      K++;
    }
  }
  // Tail: from the first character boundary at or after S - R.
  UINT16 TailRoom = static_cast<UINT16> (Room - 3 - K);
  UINT16 J = 0;
  while (J < S - TailRoom) J = static_cast<UINT16> (J + (Source[J] >= 0x80 ? 2 : 1));
  if (J > S) J = S;
  CHAR8 *P = Out + K;
  *P++ = '.';
  *P++ = '.';
  *P++ = '.';
  for (UINT16 I = J; I < S; I++) *P++ = Source[I];
  *P = 0;
}

VOID GroupThousands (CHAR8 *Digits) {
  UINT16 Length = StringLength (Digits);
  if (Length <= 3) return;
  CHAR8 Work[GROUP_BUFFER_SIZE];
  UINT16 Out = 0;
  for (UINT16 I = 0; I < Length && Out < GROUP_BUFFER_SIZE - 1; I++) {
    if (I > 0 && (Length - I) % 3 == 0) {
      Work[Out++] = ',';
      if (Out >= GROUP_BUFFER_SIZE - 1) break;
    }
    Work[Out++] = Digits[I];
  }
  Work[Out] = 0;
  CopyString (Digits, Work);
}

UINT32 ParseDecimal (const CHAR8 *String) { return ParseDigits (String, 10); }

UINT32 ParseHex (const CHAR8 *String) { return ParseDigits (String, 16); }

UINT32 ParseNumber (const CHAR8 *String) {
  if (String == nullptr) return 0;
  if (String[0] == '0' && (String[1] == 'x' || String[1] == 'X')) return ParseHex (String + 2);
  return ParseDecimal (String);
}

BOOLEAN SplitPath (const CHAR8 *Path, CHAR8 *Directory, const CHAR8 **Name) {
  // Measure without UINT16 wrap so that very long paths are refused.
  UINTN Length = 0;
  UINTN Separator = 0;  // bytes up to and including the last "\"
  while (Path[Length] != 0) {
    if (Path[Length] == '\\') Separator = Length + 1;
    Length++;
    if (Length > SPLIT_PATH_MAX) return FALSE;
  }

  if (Separator == 0) {
    Directory[0] = '\\';
    Directory[1] = 0;
    *Name = Path;
    return TRUE;
  }
  if (Separator == 1 && Path[0] == '\\') {
    Directory[0] = '\\';
    Directory[1] = 0;
  } else {
    if (Separator > SPLIT_DIRECTORY_SIZE) return FALSE;
    for (UINTN I = 0; I < Separator - 1; I++) Directory[I] = Path[I];
    Directory[Separator - 1] = 0;
  }
  if (Path[Separator] == 0) {
    *Name = nullptr;
    return FALSE;
  }
  *Name = Path + Separator;
  return TRUE;
}
