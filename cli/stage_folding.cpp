// Width and case, and the references for markup characters.

#include "runs.h"
#include "stage.h"

namespace cli {
namespace {

bool isMarkup(gchar_t unit) {
  return unit == unitOf(0xA3, 0xA6) || unit == unitOf(0xA3, 0xBC) || unit == unitOf(0xA3, 0xBE);
}

// Calls plain(part) and markup(pair) for the parts of a run of pairs in turn.
template <class Plain, class MarkupPair>
void splitAtMarkup(std::string_view run, Plain plain, MarkupPair markup) {
  while (!run.empty()) {
    std::size_t at = 0;
    while (at < run.size() && !isMarkup(unitAt(run.data() + at))) at += 2;
    plain(run.substr(0, at));
    if (at == run.size()) return;
    markup(run.substr(at, 2));
    run.remove_prefix(at + 2);
  }
}

class WidthStage : public Stage {
 public:
  explicit WidthStage(Markup markup) : markup_(markup) {}

  void apply(std::string_view text, bool, std::string& out) override {
    forEachRun(
        text, [&](std::string_view run) { out.append(run); },
        [&](std::string_view run) {
          if (markup_ == Markup::plain) return fold(run, out);
          splitAtMarkup(
              run, [&](std::string_view part) { fold(part, out); },
              [&](std::string_view pair) { out.append(pair); });
        });
  }

 private:
  static void fold(std::string_view run, std::string& out) {
    if (run.empty()) return;
    const std::size_t begin = out.size();
    out.resize(begin + run.size() + 1);
    const auto size = static_cast<int>(run.size());
    const int written = sbc2dbc(run.data(), size, out.data() + begin, size + 1, false);
    out.resize(begin + static_cast<std::size_t>(written));
  }

  const Markup markup_;
};

class CaseStage : public Stage {
 public:
  void apply(std::string_view text, bool, std::string& out) override {
    const std::size_t begin = out.size();
    out.append(text);
    char* const end = out.data() + out.size();
    for (char* p = out.data() + begin; p < end;) {
      if (isAscii(static_cast<Byte>(*p))) {
        if (*p >= 'A' && *p <= 'Z') *p = static_cast<char>(*p + ('a' - 'A'));
        p += 1;
      } else {
        const gchar_t small = toLowerCase(unitAt(p));
        std::memcpy(p, &small, sizeof small);
        p += 2;
      }
    }
  }
};

class ReferenceStage : public Stage {
 public:
  void apply(std::string_view text, bool, std::string& out) override {
    forEachRun(
        text, [&](std::string_view run) { out.append(run); },
        [&](std::string_view run) {
          splitAtMarkup(
              run, [&](std::string_view part) { out.append(part); },
              [&](std::string_view pair) {
                char reference[8];
                const int size = decodelibpage(pair.data(), 2, reference, sizeof reference, false);
                out.append(reference, static_cast<std::size_t>(size));
              });
        });
  }
};

}  // namespace

std::unique_ptr<Stage> makeWidthStage(Markup markup) {
  return std::make_unique<WidthStage>(markup);
}
std::unique_ptr<Stage> makeCaseStage() { return std::make_unique<CaseStage>(); }
std::unique_ptr<Stage> makeReferenceStage() { return std::make_unique<ReferenceStage>(); }

}  // namespace cli
