// From GBK to the other targets.

#include <algorithm>

#include "library_call.h"
#include "recode.h"
#include "runs.h"
#include "stage.h"

namespace cli {
namespace {

class WideStage : public Stage {
 public:
  explicit WideStage(EncodingConvertor& converter) : converter_(converter) {}

  void apply(std::string_view text, bool, std::string& out) override {
    forEachRun(
        text,
        [&](std::string_view run) {
          appendConverted(converter_, &EncodingConvertor::t2sgbk, run, out);
        },
        [&](std::string_view run) { out.append(run); });
  }

 private:
  EncodingConvertor& converter_;
};

// What stands for a character that Big5 does not have, and the one character that it is itself.
constexpr std::string_view kWhiteSquare = "\xA1\xBC";
constexpr UINT16 kWhiteSquareCodePoint = 0x25A1;

class Big5Stage : public Stage {
 public:
  Big5Stage(EncodingConvertor& converter, std::vector<Unencoded>& unencoded)
      : converter_(converter),
        unencoded_(unencoded),
        whiteSquare_(converter.getucgvalue(kWhiteSquareCodePoint)) {}

  void apply(std::string_view text, bool, std::string& out) override {
    std::size_t line = 0;
    forEachRun(
        text,
        [&](std::string_view run) {
          out.append(run);
          line += static_cast<std::size_t>(std::count(run.begin(), run.end(), '\n'));
        },
        [&](std::string_view run) {
          const std::size_t begin = out.size();
          convert(run, out);
          if (out.find(kWhiteSquare, begin) != std::string::npos) findUnencoded(run, line);
        });
  }

 private:
  void convert(std::string_view run, std::string& out) {
    terminated_.assign(run);
    const std::size_t begin = out.size();
    const std::size_t room = run.size() + 2;
    out.resize(begin + room);
    const int written = converter_.gchar2big5(terminated_.c_str(), out.data() + begin,
                                              static_cast<int>(room), false);
    out.resize(begin + static_cast<std::size_t>(written));
  }

  void findUnencoded(std::string_view run, std::size_t line) {
    for (; !run.empty(); run.remove_prefix(2)) {
      std::string code;
      convert(run.substr(0, 2), code);
      const gchar_t unit = unitAt(run.data());
      if (code == kWhiteSquare && unit != whiteSquare_) unencoded_.push_back({line, unit});
    }
  }

  EncodingConvertor& converter_;
  std::vector<Unencoded>& unencoded_;
  const gchar_t whiteSquare_;
  std::string terminated_;
};

// Asks the C library once for every code: a call for each run would cost more than the run.
class Utf8Stage : public Stage {
 public:
  Utf8Stage() {
    const Recoder toUtf8("UTF-8", "GB18030");
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
      for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
        const char code[2] = {static_cast<char>(lead), static_cast<char>(trail)};
        const auto text = toUtf8({code, sizeof code});
        if (!text || text->size() > sizeof(Sequence::bytes)) continue;
        Sequence& sequence = sequences_[unitAt(code)];
        sequence.size = static_cast<unsigned char>(text->copy(sequence.bytes, text->size()));
      }
    }
  }

  void apply(std::string_view text, bool, std::string& out) override {
    forEachRun(
        text, [&](std::string_view run) { out.append(run); },
        [&](std::string_view run) {
          for (; !run.empty(); run.remove_prefix(2)) {
            const Sequence& sequence = sequences_[unitAt(run.data())];
            out.append(sequence.bytes, sequence.size);
          }
        });
  }

 private:
  struct Sequence {
    char bytes[4] = {'\xEF', '\xBF', '\xBD', 0};
    unsigned char size = 3;
  };

  std::vector<Sequence> sequences_ = std::vector<Sequence>(0x10000);
};

}  // namespace

std::unique_ptr<Stage> makeWideStage(EncodingConvertor& converter) {
  return std::make_unique<WideStage>(converter);
}

std::unique_ptr<Stage> makeBig5Stage(EncodingConvertor& converter,
                                     std::vector<Unencoded>& unencoded) {
  return std::make_unique<Big5Stage>(converter, unencoded);
}

std::unique_ptr<Stage> makeUtf8Stage() { return std::make_unique<Utf8Stage>(); }

}  // namespace cli
