// Matching the names of a level's two listings: every source entry is
// paired with the first backup entry, in listing order, whose name is the
// same but for the case of ASCII letters, and keeps that entry's index. The
// backup names are sorted once into an index, so each source name is found
// by a binary search.
#include "compare/compare_internal.h"
#include "platform/library.h"
#include "util/string_utils.h"

// Sorts Index (backup entry numbers) by name, keeping listing order among
// equal names: a stable bottom-up merge sort through Work.
static VOID SortByName (const DIRECTORY_ENTRY *Entries, UINT16 *Index, UINT16 *Work, UINTN Count) {
  for (UINTN Width = 1; Width < Count; Width *= 2) {
    for (UINTN Left = 0; Left < Count; Left += 2 * Width) {
      UINTN Middle = Left + Width < Count ? Left + Width : Count;
      UINTN Right = Middle + Width < Count ? Middle + Width : Count;
      UINTN A = Left, B = Middle, Out = Left;
      while (A < Middle && B < Right) {
        // Ties take the left run first: it holds the earlier entries.
        if (CompareNames (Entries[Index[B]].Name, Entries[Index[A]].Name) < 0) {
          Work[Out++] = Index[B++];
        } else {
          Work[Out++] = Index[A++];
        }
      }
      while (A < Middle) Work[Out++] = Index[A++];
      while (B < Right) Work[Out++] = Index[B++];
    }
    CopyMem (Index, Work, Count * sizeof (UINT16));
  }
}

// The first backup entry, in listing order, whose name matches; null when none does.
static DIRECTORY_ENTRY *FirstMatch (DIRECTORY_ENTRY *Entries, const UINT16 *Index, UINTN Count, const CHAR8 *Name) {
  UINTN Low = 0, High = Count;   // lower bound: the first index entry not below Name
  while (Low < High) {
    UINTN Middle = Low + (High - Low) / 2;
    if (CompareNames (Entries[Index[Middle]].Name, Name) < 0) {
      Low = Middle + 1;
    } else {
      High = Middle;
    }
  }
  if (Low == Count || CompareNames (Entries[Index[Low]].Name, Name) != 0) return nullptr;
  return &Entries[Index[Low]];
}

// The same pairing by scanning, for when the index gets no memory.
static DIRECTORY_ENTRY *ScanForMatch (DIRECTORY_ENTRY *Entries, UINTN Count, const CHAR8 *Name) {
  for (UINTN B = 0; B < Count; B++)
    if (NamesEqual (Name, Entries[B].Name)) return &Entries[B];
  return nullptr;
}

VOID MatchEntries (COMPARE_LEVEL *Level) {
  UINTN Count = Level->BackupCount;
  DIRECTORY_ENTRY *Backup = Level->BackupEntries;
  for (UINTN B = 0; B < Count; B++) Backup[B].Matched = 0;

  UINT16 *Index = (UINT16 *)AllocatePool (2 * Count * sizeof (UINT16));
  if (Index != nullptr) {
    for (UINTN B = 0; B < Count; B++) Index[B] = (UINT16)B;
    SortByName (Backup, Index, Index + Count, Count);
  }
  for (UINTN S = 0; S < Level->SourceCount; S++) {
    DIRECTORY_ENTRY *Source = &Level->SourceEntries[S];
    DIRECTORY_ENTRY *Partner =
        Index != nullptr ? FirstMatch (Backup, Index, Count, Source->Name) : ScanForMatch (Backup, Count, Source->Name);
    Source->Matched = Partner != nullptr ? 1 : 0;
    Source->Partner = Partner != nullptr ? (UINT16)(Partner - Backup) : 0;
    if (Partner != nullptr) Partner->Matched = 1;
  }
  if (Index != nullptr) FreePool (Index);
}
