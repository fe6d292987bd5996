// CompareMem reads a word at a time: its answer must be the one of a plain
// byte loop whatever the alignment, the length and the place of a difference.
// CopyMem moves overlapping ranges whole, in either direction.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/library.h"

namespace {

int Sign (INTN Value) { return (Value > 0) - (Value < 0); }

TEST (CompareMem, AgreesWithAByteLoopAtEveryOffsetLengthAndDifference) {
  std::vector<UINT8> A (80), B (80);
  for (size_t I = 0; I < A.size (); I++) A[I] = B[I] = static_cast<UINT8> (I * 37 + 5);
  for (size_t OffsetA = 0; OffsetA < 8; OffsetA++) {
    for (size_t OffsetB = 0; OffsetB < 8; OffsetB += 3) {
      for (size_t Length = 0; Length <= 40; Length++) {
        // Equal runs, then a difference at every place, upward and downward
        // (a byte of 0x80 or more is larger than one below it).
        std::vector<UINT8> X (A.begin () + OffsetA, A.begin () + OffsetA + Length);
        std::copy (X.begin (), X.end (), B.begin () + OffsetB);
        EXPECT_EQ (CompareMem (A.data () + OffsetA, B.data () + OffsetB, Length), 0);
        for (size_t At = 0; At < Length; At++) {
          for (UINT8 Other : {static_cast<UINT8> (X[At] ^ 0x80), static_cast<UINT8> (X[At] + 1)}) {
            B[OffsetB + At] = Other;
            INTN Want = static_cast<INTN> (X[At]) - static_cast<INTN> (Other);
            INTN Got = CompareMem (A.data () + OffsetA, B.data () + OffsetB, Length);
            ASSERT_EQ (Got, Want) << OffsetA << " " << OffsetB << " " << Length << " " << At;
            EXPECT_EQ (Sign (CompareMem (B.data () + OffsetB, A.data () + OffsetA, Length)), -Sign (Want));
            B[OffsetB + At] = X[At];
          }
        }
        // A later difference does not hide an earlier one.
        if (Length >= 2) {
          B[OffsetB + Length - 1] ^= 1;
          B[OffsetB] = static_cast<UINT8> (X[0] + 1);
          EXPECT_EQ (CompareMem (A.data () + OffsetA, B.data () + OffsetB, Length), -1);
          B[OffsetB + Length - 1] = X[Length - 1];
          B[OffsetB] = X[0];
        }
      }
    }
  }
}

TEST (CopyMem, MovesOverlappingRangesWhole) {
  UINT8 Up[] = "abcdefgh", Down[] = "abcdefgh";
  CopyMem (Up + 2, Up, 5);
  CopyMem (Down, Down + 2, 5);
  EXPECT_STREQ (reinterpret_cast<char *> (Up), "ababcdeh");
  EXPECT_STREQ (reinterpret_cast<char *> (Down), "cdefgfgh");
}

}  // namespace
