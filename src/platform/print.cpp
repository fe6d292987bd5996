// Formatting in the manner of EDK II's print library, for 8-bit buffers
// (AsciiSPrint) and for the console (Print, UTF-16).
//
// Conversions: %d %i (signed), %u (unsigned), %x %X (hexadecimal, digits in
// upper case), %p (pointer, 16 hexadecimal digits), %a (8-bit text), %s
// (UTF-16 text), %c (character), %r (status as its name), %%. Flags: '-'
// (left-justify), '+', ' ', '0' (zero-pad), ',' (group thousands); a width
// (digits or '*'), a precision ('.' digits or '*', the maximum characters of
// a text or the minimum digits of a number) and 'l'/'L' for 64-bit
// arguments. Without 'l' integer arguments are 32 bits wide. %X also pads
// with zeros. As in EDK II, "\n" in the format (or "\n\r") is written as
// "\r\n". An unknown conversion character is written as it is.
#include "platform/library.h"

namespace {

// Output sink: writes at most Capacity characters (the terminator is added
// by the caller's buffer handling) and counts what it wrote.
template <typename OutChar>
struct Sink {
  OutChar *Buffer;
  UINTN Capacity;
  UINTN Count;

  void Put (UINT32 Character) {
    if (Count < Capacity) Buffer[Count++] = static_cast<OutChar> (Character);
  }
  void Repeat (UINT32 Character, INTN Times) {
    // Padding past the end of the buffer is dropped at once, however wide.
    for (INTN I = 0; I < Times && Count < Capacity; I++) Put (Character);
  }
};

const CHAR8 *StatusName (EFI_STATUS Status) {
  static const char *const Errors[] = {
      "Success",           "Load Error",       "Invalid Parameter", "Unsupported",       "Bad Buffer Size",
      "Buffer Too Small",  "Not Ready",        "Device Error",      "Write Protected",   "Out of Resources",
      "Volume Corrupt",    "Volume Full",      "No Media",          "Media changed",     "Not Found",
      "Access Denied",     "No Response",      "No mapping",        "Time out",          "Not started",
      "Already started",   "Aborted",          "ICMP Error",        "TFTP Error",        "Protocol Error",
      "Incompatible Version", "Security Violation", "CRC Error",    "End of Media",      "Reserved (29)",
      "Reserved (30)",     "End of File",      "Invalid Language",  "Compromised Data"};
  static const char *const Warnings[] = {"Success",          "Warning Unknown Glyph",    "Warning Delete Failure",
                                         "Warning Write Failure", "Warning Buffer Too Small", "Warning Stale Data"};
  const UINT64 ErrorBit = 0x8000000000000000ULL;
  UINT64 Code = static_cast<UINT64> (Status);
  if (Code & ErrorBit) {
    UINT64 Index = Code & ~ErrorBit;
    if (Index > 0 && Index < sizeof (Errors) / sizeof (Errors[0]))
      return reinterpret_cast<const CHAR8 *> (Errors[Index]);
    return nullptr;
  }
  if (Code < sizeof (Warnings) / sizeof (Warnings[0])) return reinterpret_cast<const CHAR8 *> (Warnings[Code]);
  return nullptr;
}

enum : UINT32 {
  LEFT = 0x01,
  PLUS = 0x02,
  SPACE = 0x04,
  ZERO = 0x08,
  COMMA = 0x10,
  LONG = 0x20,
  PRECISION = 0x40,
};

// Writes a number with sign, zero padding, grouping and justification.
template <typename OutChar>
void PutNumber (Sink<OutChar> &Out, UINT64 Magnitude, bool Negative, UINT32 Radix, UINT32 Flags, INTN Width,
                INTN Precision) {
  CHAR8 Digits[32];
  INTN N = 0;
  UINTN Group = 0;
  do {
    if ((Flags & COMMA) && Radix == 10 && Group == 3) {
      Digits[N++] = ',';
      Group = 0;
    }
    UINT32 Digit = static_cast<UINT32> (Magnitude % Radix);
    Digits[N++] = static_cast<CHAR8> (Digit < 10 ? '0' + Digit : 'A' + Digit - 10);
    Magnitude /= Radix;
    Group++;
  } while (Magnitude != 0);

  CHAR8 Sign = 0;
  if (Negative)
    Sign = '-';
  else if (Flags & PLUS)
    Sign = '+';
  else if (Flags & SPACE)
    Sign = ' ';

  INTN Zeros = (Flags & PRECISION) && Precision > N ? Precision - N : 0;
  INTN Length = N + Zeros + (Sign ? 1 : 0);
  if ((Flags & ZERO) && !(Flags & LEFT) && !(Flags & PRECISION) && Width > Length) {
    Zeros += Width - Length;
    Length = Width;
  }
  if (!(Flags & LEFT)) Out.Repeat (' ', Width - Length);
  if (Sign) Out.Put (static_cast<UINT8> (Sign));
  Out.Repeat ('0', Zeros);
  while (N > 0) Out.Put (static_cast<UINT8> (Digits[--N]));
  if (Flags & LEFT) Out.Repeat (' ', Width - Length);
}

// Writes a text of 8-bit or UTF-16 characters, at most Precision of them
// when a precision was given, justified within Width.
template <typename OutChar, typename TextChar>
void PutText (Sink<OutChar> &Out, const TextChar *Text, UINT32 Flags, INTN Width, INTN Precision) {
  static const char NullText[] = "<null string>";
  if (Text == nullptr) {
    PutText (Out, reinterpret_cast<const UINT8 *> (NullText), Flags, Width, Precision);
    return;
  }
  INTN Length = 0;
  while (Text[Length] != 0 && (!(Flags & PRECISION) || Length < Precision)) Length++;
  if (!(Flags & LEFT)) Out.Repeat (' ', Width - Length);
  for (INTN I = 0; I < Length; I++) Out.Put (static_cast<UINT32> (Text[I]));
  if (Flags & LEFT) Out.Repeat (' ', Width - Length);
}

template <typename OutChar, typename FormatChar>
UINTN FormatInto (Sink<OutChar> &Out, const FormatChar *Format, va_list Marker) {
  if (Format == nullptr) return 0;
  for (const FormatChar *F = Format; *F != 0; F++) {
    UINT32 C = static_cast<UINT32> (*F);
    if (C == '\n' || (C == '\r' && F[1] == '\n')) {
      // "\n", "\r\n" and "\n\r" all end a line as "\r\n".
      Out.Put ('\r');
      Out.Put ('\n');
      if (F[1] == (C == '\n' ? '\r' : '\n')) F++;
      continue;
    }
    if (C != '%') {
      Out.Put (C);
      continue;
    }

    UINT32 Flags = 0;
    INTN Width = 0, Precision = 0;
    // Flags, width, precision and size, in any order as EDK II accepts them.
    for (bool More = true; More;) {
      F++;
      switch (static_cast<UINT32> (*F)) {
        case '-': Flags |= LEFT; break;
        case '+': Flags |= PLUS; break;
        case ' ': Flags |= SPACE; break;
        case ',': Flags |= COMMA; break;
        case 'l':
        case 'L': Flags |= LONG; break;
        case '*':
          if (Flags & PRECISION)
            Precision = va_arg (Marker, int);
          else
            Width = va_arg (Marker, int);
          break;
        case '.':
          Flags |= PRECISION;
          Precision = 0;
          break;
        case '0':
          if (!(Flags & PRECISION) && Width == 0) {
            Flags |= ZERO;
            break;
          }
          [[fallthrough]];
        case '1': case '2': case '3': case '4': case '5': case '6': case '7': case '8': case '9': {
          INTN Value = 0;
          while (*F >= '0' && *F <= '9') {
            if (Value < 100000) Value = Value * 10 + (static_cast<UINT32> (*F) - '0');
            F++;
          }
          F--;
          if (Flags & PRECISION)
            Precision = Value;
          else
            Width = Value;
          break;
        }
        default: More = false; break;
      }
    }
    if (Width < 0) {
      Flags |= LEFT;
      Width = -Width;
    }

    UINT32 Conversion = static_cast<UINT32> (*F);
    switch (Conversion) {
      case 0:
        return Out.Count;  // a lone '%' at the end
      case 'd':
      case 'i': {
        INT64 Value = (Flags & LONG) ? va_arg (Marker, INT64) : static_cast<INT64> (va_arg (Marker, int));
        bool Negative = Value < 0;
        UINT64 Magnitude = Negative ? 0 - static_cast<UINT64> (Value) : static_cast<UINT64> (Value);
        PutNumber (Out, Magnitude, Negative, 10, Flags, Width, Precision);
        break;
      }
      case 'u': {
        UINT64 Value = (Flags & LONG) ? va_arg (Marker, UINT64) : va_arg (Marker, unsigned int);
        PutNumber (Out, Value, false, 10, Flags, Width, Precision);
        break;
      }
      case 'X':
        Flags |= ZERO;
        [[fallthrough]];
      case 'x': {
        UINT64 Value = (Flags & LONG) ? va_arg (Marker, UINT64) : va_arg (Marker, unsigned int);
        PutNumber (Out, Value, false, 16, Flags & ~(COMMA | PLUS | SPACE), Width, Precision);
        break;
      }
      case 'p': {
        UINT64 Value = reinterpret_cast<UINTN> (va_arg (Marker, VOID *));
        PutNumber (Out, Value, false, 16, ZERO, 16, 0);
        break;
      }
      case 'a':
        PutText (Out, va_arg (Marker, const UINT8 *), Flags, Width, Precision);
        break;
      case 's':
      case 'S':
        PutText (Out, va_arg (Marker, const UINT16 *), Flags, Width, Precision);
        break;
      case 'c': {
        UINT16 Character[2] = {static_cast<UINT16> (va_arg (Marker, UINTN) & 0xFFFF), 0};
        if (Character[0] == 0) {
          if (!(Flags & LEFT)) Out.Repeat (' ', Width - 1);
          if (Flags & LEFT) Out.Repeat (' ', Width - 1);
          break;
        }
        PutText (Out, Character, Flags & ~PRECISION, Width, 0);
        break;
      }
      case 'r': {
        EFI_STATUS Status = va_arg (Marker, EFI_STATUS);
        const CHAR8 *Name = StatusName (Status);
        if (Name != nullptr)
          PutText (Out, Name, Flags, Width, Precision);
        else
          PutNumber (Out, static_cast<UINT64> (Status), false, 16, ZERO, 16, 0);
        break;
      }
      case '%':
        Out.Put ('%');
        break;
      default:
        Out.Put (Conversion);
        break;
    }
  }
  return Out.Count;
}

// Longest console line Print formats, in characters.
constexpr UINTN PRINT_MAX_CHARACTERS = 320;

}  // namespace

UINTN AsciiVSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, va_list Marker) {
  if (Buffer == nullptr || BufferSize == 0) return 0;
  Sink<CHAR8> Out {Buffer, BufferSize - 1, 0};
  va_list Copy;
  va_copy (Copy, Marker);
  FormatInto (Out, Format, Copy);
  va_end (Copy);
  Buffer[Out.Count] = 0;
  return Out.Count;
}

UINTN AsciiSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, ...) {
  va_list Marker;
  va_start (Marker, Format);
  UINTN N = AsciiVSPrint (Buffer, BufferSize, Format, Marker);
  va_end (Marker);
  return N;
}

UINTN Print (const char16_t *Format, ...) {
  CHAR16 Line[PRINT_MAX_CHARACTERS + 1];
  Sink<CHAR16> Out {Line, PRINT_MAX_CHARACTERS, 0};
  va_list Marker;
  va_start (Marker, Format);
  FormatInto (Out, reinterpret_cast<const UINT16 *> (Format), Marker);
  va_end (Marker);
  Line[Out.Count] = 0;
  if (gST != nullptr && gST->ConOut != nullptr && Out.Count > 0) gST->ConOut->OutputString (gST->ConOut, Line);
  return Out.Count;
}
