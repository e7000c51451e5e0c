// Every conversion beside its peers and limits.

#include <sgbk/EncodingConvertor.h>

#include <cstring>
#include <functional>
#include <memory>

#include "peers.h"
#include "rows.h"

namespace sgbk_bench {
namespace {

using Units = std::vector<unsigned short>;
using Shared = std::shared_ptr<const Text>;

EncodingConvertor& converter() { return *EncodingConvertor::getInstance(); }

Units unitsOf(const std::string& bytes) {
  Units units(bytes.size() / 2);
  std::memcpy(units.data(), bytes.data(), 2 * units.size());
  return units;
}

std::string bytesOf(const Units& units) {
  return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

// One text and everything that converts it.
class Group {
 public:
  Group(std::string operation, Kind kind, const Text& text)
      : prefix_(operation + (kind == Kind::prose ? "/prose/" : "/pages/")),
        text_(std::make_shared<Text>(text)) {}

  // The library: called with the text and its output, returns what the operation returns.
  template <class Convert>
  Group& sgbk(Convert convert) {
    written_ = [=, text = text_](std::span<char> out) {
      return static_cast<std::size_t>(convert(text->bytes, out));
    };
    add("sgbk", text_, [=](const std::string& in, std::span<char> out) {
      return static_cast<std::size_t>(convert(in, out));
    });
    return *this;
  }

  // A general tool, on the same bytes or on `text`.
  template <class Peer>
  Group& peer(const std::string& who, std::shared_ptr<Peer> tool) {
    return peer(who, tool, *text_);
  }
  template <class Peer>
  Group& peer(const std::string& who, std::shared_ptr<Peer> tool, const Text& text) {
    add(who, std::make_shared<Text>(text),
        [=](const std::string& in, std::span<char> out) { return (*tool)(in, out); });
    return *this;
  }

  Group& iconv(const char* from, const char* to) { return iconv(from, to, *text_); }
  Group& iconv(const char* from, const char* to, const Text& text) {
    return peer(std::string("iconv ") + from + " to " + to,
                std::make_shared<IconvConverter>(from, to), text);
  }
  Group& icu(const char* from, const char* to) {
    return peer(std::string("ICU ") + from + " to " + to, std::make_shared<IcuConverter>(from, to));
  }

  // The characters' codes known already: one load from a table and one store for each.
  Group& bareLookup(const Units& codes) {
    Units table(65536);
    for (std::size_t i = 0; i < table.size(); ++i) {
      table[i] = converter().getucgvalue(static_cast<unsigned short>(i));
    }
    addRow(prefix_ + "bare look-up", text_->characters, 2 * codes.size(),
           [codes, table](std::span<char> out) {
             char* to = out.data();
             const unsigned short* const entries = table.data();
             for (const unsigned short code : codes) {
               std::memcpy(to, &entries[code], 2);
               to += 2;
             }
             return out.size();
           });
    return *this;
  }

  // The bytes of the text and of its conversion, copied.
  Group& memcpyOfBoth() {
    std::vector<char> result(room());
    const std::size_t written = written_(result);
    addRow(prefix_ + "memcpy of both", text_->characters, text_->bytes.size() + written,
           [text = text_, result, written](std::span<char> out) {
             std::memcpy(out.data(), text->bytes.data(), text->bytes.size());
             std::memcpy(out.data() + text->bytes.size(), result.data(), written);
             return out.size();
           });
    return *this;
  }

 private:
  std::size_t room() const { return 2 * text_->bytes.size() + 4; }

  template <class Convert>
  void add(const std::string& who, const Shared& text, Convert convert) {
    addRow(prefix_ + who, text_->characters, room(),
           [=](std::span<char> out) { return convert(text->bytes, out); });
  }

  std::string prefix_;
  Shared text_;
  std::function<std::size_t(std::span<char>)> written_;
};

using Bytes = const std::string&;
using Out = std::span<char>;

int sizeOf(Bytes text) { return static_cast<int>(text.size()); }
int roomIn(Out out) { return static_cast<int>(out.size()); }

template <class Member>
auto stream(Member member) {
  return [=](Bytes in, Out out) {
    return (converter().*member)(in.data(), sizeOf(in), out.data(), roomIn(out));
  };
}

template <class Member>
auto unitStream(Member member) {
  return [=](Bytes in, Out out) {
    return (converter().*member)(reinterpret_cast<const unsigned short*>(in.data()), sizeOf(in) / 2,
                                 out.data(), roomIn(out));
  };
}

template <class Member>
auto array(Member member, bool ifcase) {
  return [=](Bytes in, Out out) {
    return (converter().*member)(in.c_str(), reinterpret_cast<gchar_t*>(out.data()),
                                 roomIn(out) / 2, ifcase);
  };
}

auto halfWidth(bool ifcase) {
  return [=](Bytes in, Out out) {
    return sbc2dbc(in.data(), sizeOf(in), out.data(), roomIn(out), ifcase);
  };
}

// The text's characters as full-width ones. Line ends stay: they have no full-width form.
Text widened(const Text& gbk) {
  std::string wide;
  std::string line(2 * gbk.bytes.size(), '\0');
  for (std::size_t begin = 0; begin < gbk.bytes.size();) {
    const std::size_t end = std::min(gbk.bytes.find('\n', begin), gbk.bytes.size());
    const int size = converter().t2sgbk(gbk.bytes.data() + begin, static_cast<int>(end - begin),
                                        line.data(), sizeOf(line));
    wide.append(line, 0, static_cast<std::size_t>(size));
    if (end < gbk.bytes.size()) wide += '\n';
    begin = end + 1;
  }
  return {wide, gbk.characters};
}

// The text as so many short ones, as titles and queries are.
void addTitles(Kind kind, const Text& gbk) {
  constexpr std::size_t kSize = 40;
  const auto list = pieces(gbk.bytes, kSize, lengthsOfPairs(gbk.bytes));
  const auto each = [list](auto convert) {
    return [list, convert](Bytes, Out out) {
      std::size_t written = 0;
      for (const std::string& title : list) {
        written += static_cast<std::size_t>(convert(title, out));
      }
      return written;
    };
  };
  using Peer = std::function<std::size_t(Bytes, Out)>;
  Group("t2sgchar 40 bytes", kind, gbk)
      .sgbk(each(array(&EncodingConvertor::t2sgchar, false)))
      .peer(
          "iconv GBK to UTF-16LE",
          std::make_shared<Peer>(each([tool = std::make_shared<IconvConverter>("GBK", "UTF-16LE")](
                                          Bytes in, Out out) { return (*tool)(in, out); })));
}

Units pairCodes(Bytes text) {
  Units codes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto b = static_cast<unsigned char>(text[i]);
    const bool pair = b > 0x80 && i + 1 < text.size();
    const unsigned trail = pair ? static_cast<unsigned char>(text[++i]) : 0;
    codes.push_back(static_cast<unsigned short>(b + 256 * trail));
  }
  return codes;
}

}  // namespace

void addConversions(Kind kind, std::size_t limit) {
  using E = EncodingConvertor;
  const Source traditional(kind, Script::traditional, limit);
  const Source simplified(kind, Script::simplified, limit);
  const Text big5 = traditional.in("BIG5");
  const Text gbk = traditional.in("GBK");
  const Text utf8 = traditional.in("UTF-8");
  const Text utf16 = traditional.in("UTF-16LE");
  const Text wide = widened(gbk);
  const Text hz = simplified.in("HZ");

  Group("b52sgbk", kind, big5)
      .sgbk(stream(&E::b52sgbk))
      .iconv("BIG5", "GBK")
      .icu("Big5", "GBK")
      .peer("iconv, OpenCC, iconv", std::make_shared<Pipeline>())
      .bareLookup(pairCodes(big5.bytes))
      .memcpyOfBoth();
  Group("t2sgbk", kind, gbk)
      .sgbk(stream(&E::t2sgbk))
      .iconv("GBK", "UTF-16LE")
      .bareLookup(pairCodes(gbk.bytes))
      .memcpyOfBoth();
  Group("utf82sgbk", kind, utf8)
      .sgbk(stream(&E::utf82sgbk))
      .iconv("UTF-8", "GBK")
      .icu("UTF-8", "GBK")
      .bareLookup(unitsOf(utf16.bytes))
      .memcpyOfBoth();
  Group("uc2sgbk_DB", kind, utf16)
      .sgbk(unitStream(&E::uc2sgbk_DB))
      .iconv("UTF-16LE", "GBK")
      .icu("UTF-16LE", "GBK")
      .bareLookup(unitsOf(utf16.bytes))
      .memcpyOfBoth();
  Group("uc2sgbk", kind, utf16)
      .sgbk(unitStream(&E::uc2sgbk))
      .iconv("UTF-16LE", "GBK")
      .icu("UTF-16LE", "GBK")
      .memcpyOfBoth();
  for (const bool ifcase : {false, true}) {
    Group(ifcase ? "t2sgchar case" : "t2sgchar", kind, gbk)
        .sgbk(array(&E::t2sgchar, ifcase))
        .iconv("GBK", "UTF-16LE");
  }
  addTitles(kind, gbk);
  Group("dbc2gchar", kind, gbk).sgbk(array(&E::dbc2gchar, false)).iconv("GBK", "UTF-16LE");
  Group("hz2sgbk", kind, hz).sgbk(stream(&E::hz2sgbk)).icu("HZ", "GBK").memcpyOfBoth();
  Group("hzgb2gbk", kind, hz).sgbk(stream(&E::hzgb2gbk)).icu("HZ", "GBK");
  for (const bool ifcase : {false, true}) {
    Group(ifcase ? "sbc2dbc case" : "sbc2dbc", kind, gbk)
        .sgbk(halfWidth(ifcase))
        .iconv("GBK", "UTF-16LE");
  }
  const Text wideUtf16 = {recode("UTF-16LE", "GBK", wide.bytes), wide.characters};
  Group("sbc2dbc widened", kind, wide)
      .sgbk(halfWidth(false))
      .iconv("GBK", "UTF-16LE")
      .peer("ICU Fullwidth-Halfwidth", std::make_shared<IcuFolder>(), wideUtf16);
  Group("gchar2big5", kind, gbk)
      .sgbk([](Bytes in, Out out) {
        return converter().gchar2big5(in.c_str(), out.data(), roomIn(out), false);
      })
      .iconv("GBK", "BIG5");
  Group("decodelibpage", kind, gbk)
      .sgbk([](Bytes in, Out out) {
        return decodelibpage(in.data(), in.size(), out.data(), out.size(), false);
      })
      .iconv("GBK", "UTF-16LE");

  Units array(gbk.bytes.size() + 1);
  const int length =
      converter().t2sgchar(gbk.bytes.c_str(), array.data(), static_cast<int>(array.size()), false);
  array.resize(static_cast<std::size_t>(length) + 1);
  Group("trimgPunc", kind, {bytesOf(array), gbk.characters})
      .sgbk([](Bytes in, Out out) {
        return trimgPunc(reinterpret_cast<const gchar_t*>(in.data()),
                         reinterpret_cast<gchar_t*>(out.data()));
      })
      .iconv("GBK", "UTF-16LE", gbk);
  // What a caller does with the text of a page.
  Group("t2sgchar then trimgPunc", kind, gbk)
      .sgbk([between = std::make_shared<Units>(array.size())](Bytes in, Out out) {
        const int units = converter().t2sgchar(in.c_str(), between->data(),
                                               static_cast<int>(between->size()), true);
        return trimgPunc(between->data(), static_cast<std::size_t>(units) + 1,
                         reinterpret_cast<gchar_t*>(out.data()));
      })
      .iconv("GBK", "UTF-16LE");
}

}  // namespace sgbk_bench
