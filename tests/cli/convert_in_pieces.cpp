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

// Of hexadecimal digits.
static std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> all(1);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    if (text[i] == ' ') all.emplace_back(), ++i;
    all.back() += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return all;
}

std::string randomText(Source source, std::size_t size, std::mt19937& random) {
  // Whole characters of the encoding beside bytes that break them.
  static const auto kCommon = words("61 5A 3C 20 09 0A 0D0A 2E 30");
  static const auto kPairs =
      words("A140 A1A1 B0A1 F377 C5E9 A3C1 A1B9 FEFE AAA1 8130 84319530 81 80 FF FE 7F A2E3");
  static const auto kUtf8 = words(
      "E9AB94 E4B8AD C3A9 C2B7 EFBBBF EDA080 EDB080 E4 B8 80 C3 C08A E08080 EFBCA1 F09F FF "
      "F4908080");
  static const auto kHz =
      words("7E7B 7E7D 7E7E 7E0A 7E 7E7B3C567E7D 7E7B2A217E7D 3C56 2121 7E78 B0A1 80 FF");
  static const auto kUnits = words("4E2D 9AD4 FEFF D83D DE00 00E9 FF21 3000 D83DDE00");
  const bool isWide = source == Source::ucs2le || source == Source::ucs2be;
  const auto& special = source == Source::utf8 ? kUtf8
                        : source == Source::hz ? kHz
                        : isWide               ? kUnits
                                               : kPairs;
  std::string text;
  while (text.size() < size) {
    const bool isCommon = random() % 3 == 0;
    const auto& choice = isCommon ? kCommon : special;
    std::string word = choice[random() % choice.size()];
    if (isWide && isCommon) word = std::string{'\0', word[0]};
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
