#include "convert_in_pieces.h"

#include <algorithm>
#include <cstring>

#include "chunker.h"
#include "pipeline.h"

namespace cli_test {

using cli::Source;

EncodingConvertor& converter() {
  EncodingConvertor::initializeInstance(nullptr);
  return *EncodingConvertor::getInstance();
}

Converted convertInPieces(const std::string& text, const cli::Options& options,
                          const std::vector<std::size_t>& reads) {
  std::size_t at = 0;
  std::size_t turn = 0;
  cli::Chunker chunker([&](char* to, std::size_t size) {
    const std::size_t most = reads[std::min(turn++, reads.size() - 1)];
    const std::size_t given = std::min({size, most, text.size() - at});
    std::memcpy(to, text.data() + at, given);
    at += given;
    return given;
  });
  Converted result;
  std::vector<cli::Loss> found;
  cli::Pipeline pipeline(converter(), options, options.from);
  chunker.setCut(options.from, pipeline.cut());
  cli::LossReport losses(options.from, [&](const cli::Loss& loss) { found.push_back(loss); });
  while (chunker.next()) {
    chunker.use(pipeline.convert(chunker.piece(), chunker.isLast(), result.text, losses));
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.offset < b.offset; });
  for (const cli::Loss& loss : found) {
    result.losses += std::to_string(loss.line) + ":" + std::to_string(loss.offset) + ":" +
                     cli::inHex(loss.bytes) + ":" + std::string(nameOf(loss.reason)) + " ";
  }
  result.summary = losses.summary();
  return result;
}

Converted convert(const std::string& text, const cli::Options& options) {
  return convertInPieces(text, options, {SIZE_MAX});
}

cli::Options plain(Source from, cli::Target to) {
  cli::Options options;
  options.from = from;
  options.to = to;
  return options;
}

std::string randomText(Source source, std::size_t size, std::mt19937& random) {
  using namespace std::string_literals;
  // Whole characters of the encoding beside bytes that break them.
  static const std::vector<std::string> kCommon = {"a",  "Z",    "<", " ", "\t",
                                                   "\n", "\r\n", ".", "0"};
  static const std::vector<std::string> kPairs = {
      "\xA1\x40", "\xA1\xA1", "\xB0\xA1", "\xF3\x77", "\xC5\xE9",         "\xA3\xC1",
      "\xA1\xB9", "\xFE\xFE", "\xAA\xA1", "\x81\x30", "\x84\x31\x95\x30", "\x81",
      "\x80",     "\xFF",     "\xFE",     "\x7F",     "\xA2\xE3"};
  static const std::vector<std::string> kUtf8 = {
      "\xE9\xAB\x94", "\xE4\xB8\xAD",    "\xC3\xA9",     "\xC2\xB7",     "\xEF\xBB\xBF",
      "\xED\xA0\x80", "\xED\xB0\x80",    "\xE4",         "\xB8",         "\x80",
      "\xC3",         "\xC0\x8A",        "\xE0\x80\x80", "\xEF\xBC\xA1", "\xF0\x9F",
      "\xFF",         "\xF4\x90\x80\x80"};
  static const std::vector<std::string> kHz = {"~{",       "~}",     "~~",  "~\n", "~",
                                               "~{<V~}",   "~{*!~}", "<V",  "!!",  "~x",
                                               "\xB0\xA1", "\x80",   "\xFF"};
  static const std::vector<std::string> kUnits = {
      "\x4E\x2D",  "\x9A\xD4", "\xFE\xFF",  "\xD8\x3D", "\xDE\x00"s,
      "\x00\xE9"s, "\xFF\x21", "\x30\x00"s, "\x01",     "\xD8\x3D\xDE\x00"s};
  const bool isWide = source == Source::ucs2le || source == Source::ucs2be;
  const auto& special = source == Source::utf8 ? kUtf8
                        : source == Source::hz ? kHz
                        : isWide               ? kUnits
                                               : kPairs;
  std::string text;
  while (text.size() < size) {
    const bool isCommon = random() % 3 == 0;
    const auto& words = isCommon ? kCommon : special;
    std::string word = words[random() % words.size()];
    if (isWide && isCommon) word = "\0"s + word[0];
    if (isWide && word.size() == 1) continue;
    for (std::size_t i = 0; source == Source::ucs2le && i < word.size(); i += 2) {
      std::swap(word[i], word[i + 1]);
    }
    text += word;
  }
  if (isWide && random() % 4 == 0) text += '\x01';
  return text;
}

std::string libraryText(Source source, const std::string& text) {
  std::string wide(2 * text.size(), '\0');
  const auto size = static_cast<int>(text.size());
  const auto room = static_cast<int>(wide.size());
  const auto call = [&](auto member, const auto* from, int count) {
    return (converter().*member)(from, count, wide.data(), room);
  };
  using E = EncodingConvertor;
  int written = 0;
  switch (source) {
    case Source::big5: written = call(&E::b52sgbk, text.data(), size); break;
    case Source::gbk: written = call(&E::t2sgbk, text.data(), size); break;
    case Source::utf8: written = call(&E::utf82sgbk, text.data(), size); break;
    case Source::hz: written = call(&E::hz2sgbk, text.data(), size); break;
    default: {
      std::vector<unsigned short> units(text.size() / 2);
      std::memcpy(units.data(), text.data(), 2 * units.size());
      if (source == Source::ucs2be) {
        for (auto& unit : units) unit = static_cast<unsigned short>(unit << 8 | unit >> 8);
      }
      written = call(&E::uc2sgbk_DB, units.data(), size / 2);
    }
  }
  wide.resize(static_cast<std::size_t>(written));
  return wide;
}

}  // namespace cli_test
