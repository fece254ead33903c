#pragma once

#include <cstdint>
#include <functional>

#include "ztcore/ztFastReadFile.h"

// Passes over equal lines of two files without making lines of them.
//
// Both files stand at the beginning of a line before and after. Equal bytes are equal text only where both
// files have one encoding; otherwise, as long as both are made of bytes, only ASCII is passed over. Two files
// whose encoding nobody has asked for yet are taken to have the same, and if it comes out at the first
// difference that they have not, everything behind the ASCII beginning is given back.
class ztLineSkipper {
 public:
  // Told, a piece of the files at a time, how many bytes of the first are passed.
  using Watch = std::function<void(int64_t)>;

  ztLineSkipper(ztFastReadFile& a, ztFastReadFile& b, const Watch& watch) noexcept
      : a_(a), b_(b), watch_(watch) {}

  // How many lines of each were passed over.
  int64_t skip();

 private:
  bool passStretch();
  size_t equalLength(size_t count) const;
  void noteGuess(size_t count);
  void passWholeLines(size_t count);
  void passInsideLine(size_t count);
  bool passUnlikeEnds(size_t equal);
  bool fillExhausted();
  void passLastLine();
  void passLine(size_t countA, size_t countB);
  void settleEncoding();

  ztFastReadFile& a_;
  ztFastReadFile& b_;
  const Watch& watch_;
  int64_t lines_ = 0;
  bool asciiOnly_ = false;
  // The beginning of a line that is too long to be kept is passed over before its end is seen.
  bool insideLine_ = false;
  int64_t lineStart_ = 0;

  // Where the first equal bytes that are not ASCII were met.
  struct Guess {
    bool made, insideLine;
    int64_t a, b, lines;
  };
  Guess guess_{};
};
