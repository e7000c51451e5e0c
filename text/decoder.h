// What all sources have in common: a character goes to the output by one look-up, and
// what is rare is dealt with here.

#ifndef SGBK_TEXT_DECODER_H
#define SGBK_TEXT_DECODER_H

#include <memory>
#include <string>

#include "account.h"
#include "buffer.h"
#include "code_table.h"
#include "core/byte_block.h"

namespace sgbk::text {

// Bytes from "&" on; what is longer is text.
inline constexpr std::size_t kLongestReference = 33;

// Of HTML: &name; &#number; and the names that pages write without the ";".
struct Reference {
  std::size_t length;  // with "&" and ";"
  CodePoint c;
  std::string name;  // empty for a number
};

enum class Found { none, unfinished, whole };

// Looks for a reference at the beginning of `text`, which is a "&".
// ended  nothing follows `text`; otherwise what may go on is unfinished
Found findReference(std::string_view text, bool ended, Reference& found);

// How ASCII is written: as it is, in lower case, as code units, or in any two bytes.
enum class Ascii { same, lowered, units, wide };

class Decoder {
 public:
  struct Surroundings {
    Account& account;
    bool references = false;              // character references are resolved
    const Buffer* replacement = nullptr;  // what stands for a loss, in the output's bytes
  };

  explicit Decoder(const Surroundings& around) : account_(around.account), around_(around) {}
  virtual ~Decoder() = default;

  // What to write, and where.
  void setOutput(const CodeTable& table, Buffer& out);

  // Writes and accounts for what is whole of the text.
  // ended    nothing follows: there is nothing to wait for
  // Returns  the bytes taken; a character that may go on is left
  std::size_t take(std::string_view text, bool ended);

 protected:
  // The same from p to end, for the account's piece. Returns where it stopped.
  virtual const Byte* decode(const Byte* p, const Byte* end, bool ended) = 0;

  // No character is more than twice as long in the output; one block may be written in excess.
  char* roomFor(std::ptrdiff_t bytes) {
    return out_->room(2 * static_cast<std::size_t>(bytes) + 16);
  }

  // Writes the character of an entry, or says what became of it.
  // p, size  its bytes in the input
  // c        the code point, where the source has it
  void put(Entry entry, const Byte* p, std::size_t size, CodePoint c = kNoCodePoint);
  // A character by its code point, in any source.
  void putCodePoint(CodePoint c, const Byte* p, std::size_t size, CodePoint told);
  // Returns size.
  std::size_t putMalformed(const Byte* p, std::size_t size, CodePoint c = kNoCodePoint) {
    put(rareEntry(Rare::malformed, 0), p, size, c);
    return size;
  }
  void putAscii(char c) { append(entries_[static_cast<Byte>(c)]); }

  // Writes the characters of a run, each one look-up. Returns where it ends.
  // size     the bytes of each in the input
  // looksAt  the bytes that codeAt reads; fewer are left
  // codeAt   the code of a character, kNone where another loop has to look
  static constexpr int kNone = -1;
  template <int size, int looksAt = size, class CodeAt>
  const Byte* takeEntries(const Byte* p, const Byte* end, char*& out, CodeAt codeAt) {
    const Byte* const begin = p;
    const Byte* const last = end - p >= looksAt ? end - looksAt + 1 : p;
    const Entry* const entries = entries_;
    char* to = out;
    for (; p < last; p += size) {
      const int code = codeAt(p);
      if (code == kNone) break;
      const Entry entry = entries[code];
      if (isRare(entry)) break;
      std::memcpy(to, &entry, sizeof entry);
      to += sizeOf(entry);
    }
    out = to;
    account_.addCharacters((p - begin) / size);
    return p;
  }

  // Takes a reference, or else the "&" alone.
  // text, unit  from the "&" on, and how many bytes of the input each of its characters is
  // Returns     the characters taken; 0 when more is needed
  std::size_t takeReference(std::string_view text, bool ended, const Byte* p, std::size_t unit);

  Buffer* out_ = nullptr;
  Account& account_;
  const Entry* entries_ = nullptr;
  const Surroundings around_;
  Ascii ascii_ = Ascii::same;

 private:
  void append(Entry entry);
  void lose(sgbk_reason reason, const Byte* p, std::size_t size, CodePoint c);
  bool resolve(const Reference& reference, const Byte* p, std::size_t size);
  void putEscaped(std::string_view ascii);
  const CodeTable& unicode();

  const CodeTable* table_ = nullptr;
  const CodeTable* unicode_ = nullptr;
  Reference reference_;  // the last one that was looked for
  std::string before_;   // its text, if it had all that belongs to it
};

// source  not automatic and not ucs2
std::unique_ptr<Decoder> makeDecoder(Source source, const Decoder::Surroundings& around);
// Of text in the middle of its way, where four bytes are one character.
std::unique_ptr<Decoder> makeMiddleDecoder(const Decoder::Surroundings& around);

std::unique_ptr<Decoder> makeBig5Decoder(const Decoder::Surroundings& around);
std::unique_ptr<Decoder> makeGbkDecoder(const Decoder::Surroundings& around);
std::unique_ptr<Decoder> makeUtf8Decoder(const Decoder::Surroundings& around);
std::unique_ptr<Decoder> makeUnitDecoder(const Decoder::Surroundings& around, bool isBigEndian);
std::unique_ptr<Decoder> makeHzDecoder(const Decoder::Surroundings& around);

}  // namespace sgbk::text

#endif
