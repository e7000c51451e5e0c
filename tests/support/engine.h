// The text engine through its C interface, for tests and fuzzing.

#ifndef SGBK_TESTS_ENGINE_H
#define SGBK_TESTS_ENGINE_H

#include <sgbk/text.h>

#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace sgbk_test {

using Words = std::vector<std::string>;
Words split(const std::string& text, char separator);

struct Closer {
  void operator()(sgbk_converter* c) const { sgbk_close(c); }
};
using Handle = std::unique_ptr<sgbk_converter, Closer>;

// A setup is "FROM TO" and options: "big5 utf-8 entities truncate=80".
Handle open(const std::string& setup);

struct Converted {
  sgbk_result result = SGBK_OK;
  std::string text;
  std::vector<sgbk_loss> losses;
  sgbk_counts counts = {};
  std::string source;
  std::string error;
};
// All of it in words, and "line:offset:bytes:code point:reason " for each loss.
std::string described(const Converted& converted);
std::string described(const std::vector<sgbk_loss>& losses);

// One call, for what it leaves in the converter.
sgbk_result feed(sgbk_converter* c, std::string_view text, bool isLast = false);

// Converts pieces of these sizes, over and over; none for the whole at once. Each piece ends at a
// protected page.
using Pieces = std::vector<std::size_t>;
Converted convert(sgbk_converter* c, std::string_view text, const Pieces& pieces);
Converted convert(const std::string& setup, std::string_view text, const Pieces& pieces = {});
std::string textOf(const std::string& setup, std::string_view text);

// GBK text with each ASCII byte widened.
std::string widened(const std::string& gbk);

// What the library's operation of this name writes; a capacity of 0 stands for enough.
std::string byLibrary(const std::string& operation, const std::string& text, int capacity = 0);

// The first names in a table of encodings.
Words names(const sgbk_encoding* (*table)(size_t*));

// A setup with the options that the bits choose, leaving out what excludes what.
std::string setupOf(const std::string& from, const std::string& to, std::size_t bits);

// Characters of a source and what breaks them.
Words wordsOf(const std::string& source);
// Up to `most` of these words or of some neighbors among them.
std::string randomText(const Words& words, std::size_t most, std::mt19937& random);

// Empty, or what is wrong: the setup gives something else for the text cut up, or line by line,
// than for the whole; strict does not stop before the first loss; auto and detect differ; the
// account does not fit the input; the output is not text of the target.
std::string disagreement(const std::string& setup, const std::string& text, const Pieces& pieces);

}  // namespace sgbk_test

#endif
