#include "detect.h"

#include "decoder.h"

namespace cli {
namespace {

struct Trial {
  std::uint64_t characters;
  std::uint64_t lost;
  std::uint64_t malformed;
};

Trial tryAs(EncodingConvertor& converter, Source source, std::string_view start, bool isWhole) {
  LossReport losses(source, [](const Loss&) {});
  losses.beginPiece(start);
  std::string text;
  makeDecoder(converter, source, Form::lines, true)->decode(start, isWhole, text, losses);
  return {losses.characters(), losses.lost(), losses.malformed()};
}

// The mark of its little-endian form begins with that of UCS-2.
bool isUtf32(std::string_view start) {
  using namespace std::string_view_literals;
  return start.starts_with("\xFF\xFE\0\0"sv) || start.starts_with("\0\0\xFE\xFF"sv);
}

}  // namespace

Source ucs2Order(std::string_view start) {
  return start.starts_with("\xFE\xFF") ? Source::ucs2be : Source::ucs2le;
}

std::optional<Source> detect(EncodingConvertor& converter, std::string_view start, bool isWhole) {
  if (isUtf32(start)) return std::nullopt;
  if (start.starts_with("\xEF\xBB\xBF")) return Source::utf8;
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) return ucs2Order(start);
  if (start.starts_with("\x84\x31\x95\x33")) return Source::gbk;
  if (start.find("~{") != std::string_view::npos &&
      tryAs(converter, Source::hz, start, isWhole).malformed == 0) {
    return Source::hz;
  }
  if (tryAs(converter, Source::utf8, start, isWhole).malformed == 0) return Source::utf8;
  return std::nullopt;
}

std::string adviceFor(EncodingConvertor& converter, std::string_view start, bool isWhole) {
  if (isUtf32(start)) return "UTF-32 by its byte-order mark, which is not read here";
  std::string advice =
      "encoding unknown: no byte-order mark, not valid UTF-8, not HZ; give it with -f (";
  for (const Source source : {Source::big5, Source::gbk}) {
    const Trial trial = tryAs(converter, source, start, isWhole);
    advice.append("as ").append(nameOf(source)).append(" ");
    advice += std::to_string(trial.lost) + " of " + std::to_string(trial.characters) + ", ";
  }
  advice.resize(advice.size() - 2);
  return advice + " characters would be lost" + (isWhole ? ")" : " at its start)");
}

}  // namespace cli
