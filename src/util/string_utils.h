// 8-bit string, number and path helpers used throughout the driver. Lengths
// are bytes in a UINT16; sizes are whole buffer sizes, terminator included.
#pragma once

#include "platform/uefi.h"

UINT16 StringLength (const CHAR8 *String);
VOID CopyString (CHAR8 *Destination, const CHAR8 *Source);
VOID CopyStringN (CHAR8 *Destination, const CHAR8 *Source, UINT16 Size);
UINT16 AppendString (CHAR8 *Destination, const CHAR8 *Source);
UINT16 AppendStringN (CHAR8 *Destination, const CHAR8 *Source, UINT16 Size);
BOOLEAN StringsEqual (const CHAR8 *A, const CHAR8 *B);
// Equal length, ASCII letters compared without case, other bytes exactly.
BOOLEAN NamesEqual (const CHAR8 *A, const CHAR8 *B);
// An order of names in which exactly the names that NamesEqual calls equal
// compare as 0: byte by byte after raising a to z to A to Z.
INTN CompareNames (const CHAR8 *A, const CHAR8 *B);
// Appends Source so that Destination stays shorter than Limit bytes, cutting
// Source in its middle with "..." and never splitting a two-byte character.
VOID AppendFitted (CHAR8 *Destination, const CHAR8 *Source, UINT16 Limit);
// Inserts "," before each group of three characters counted from the right.
VOID GroupThousands (CHAR8 *Digits);
UINT32 ParseDecimal (const CHAR8 *String);
UINT32 ParseHex (const CHAR8 *String);
UINT32 ParseNumber (const CHAR8 *String);
// Splits at the last "\": Directory (512 bytes or more) gets the part before
// it ("\" for a top-level name), *Name points after it. False when the path is
// over 1024 bytes, the directory part over 511, or nothing follows the "\".
BOOLEAN SplitPath (const CHAR8 *Path, CHAR8 *Directory, const CHAR8 **Name);
