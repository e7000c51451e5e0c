// The C interface: nothing is thrown across it.

#include "sgbk/text.h"

#include <new>
#include <utility>

#include "converter.h"

using namespace sgbk::text;

struct sgbk_converter : Converter {
  using Converter::Converter;

  std::string error;
};

namespace {

// Calls `work` and keeps what went wrong.
template <class Work>
sgbk_result attempt(sgbk_converter* c, Work work) {
  try {
    work();
    return SGBK_OK;
  } catch (Failure& failure) {
    c->error = std::move(failure.sentence);
    return failure.result;
  } catch (const std::bad_alloc&) {
    // Short enough to need no memory.
    c->error.assign("no memory");
    return SGBK_NO_MEMORY;
  }
}

// What `work` returns, null when there is no memory.
template <class Work>
auto orNull(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

template <class Encoding>
const char* nameOf(std::optional<Encoding> encoding) {
  return encoding ? nameOf(*encoding) : nullptr;
}

template <class Row>
const Row* table(std::span<const Row> rows, size_t* count) {
  *count = rows.size();
  return rows.data();
}

}  // namespace

extern "C" {

sgbk_converter* sgbk_open(const char* from, const char* to) {
  return orNull([&] {
    const auto source = sourceNamed(from);
    const auto target = targetNamed(to);
    return source && target ? new sgbk_converter(*source, *target) : nullptr;
  });
}

sgbk_result sgbk_set(sgbk_converter* c, const char* option, const char* value) {
  return attempt(c, [&] { c->set(option, value); });
}

sgbk_result sgbk_convert(sgbk_converter* c, const void* in, size_t size, int last, const char** out,
                         size_t* out_size) {
  const sgbk_result result = attempt(c, [&] {
    c->convert({static_cast<const char*>(in), size}, last != 0);
  });
  const std::string_view text = c->output();
  *out = text.empty() ? "" : text.data();
  *out_size = text.size();
  return result;
}

const sgbk_loss* sgbk_losses(const sgbk_converter* c, size_t* count) {
  const auto& losses = c->account().losses;
  *count = losses.size();
  return losses.data();
}

const sgbk_counts* sgbk_count(const sgbk_converter* c) { return &c->account().counts; }
uint64_t sgbk_lost(const sgbk_converter* c) { return c->account().lost(); }
const char* sgbk_source(const sgbk_converter* c) { return nameOf(c->source()); }
const char* sgbk_error(const sgbk_converter* c) { return c->error.c_str(); }

void sgbk_reset(sgbk_converter* c) {
  c->reset();
  c->error.clear();
}

void sgbk_close(sgbk_converter* c) { delete c; }

const char* sgbk_detect(const void* in, size_t size, int whole) {
  return orNull([&] {
    const std::string_view text(static_cast<const char*>(in), size);
    return nameOf(Detector(Source::automatic).look(text, whole != 0).source);
  });
}

const char* sgbk_source_name(const char* name) {
  return orNull([&] { return nameOf(sourceNamed(name)); });
}
const char* sgbk_target_name(const char* name) {
  return orNull([&] { return nameOf(targetNamed(name)); });
}
const sgbk_encoding* sgbk_sources(size_t* count) { return table(sources(), count); }
const sgbk_encoding* sgbk_targets(size_t* count) { return table(targets(), count); }
const sgbk_option* sgbk_options(size_t* count) { return table(optionTable(), count); }

const char* sgbk_reason_name(int reason) {
  switch (reason) {
    case SGBK_MALFORMED: return "malformed";
    case SGBK_UNDEFINED: return "undefined";
    case SGBK_NOT_IN_TARGET: return "not in the target";
    default: return "replaced";
  }
}

}  // extern "C"
