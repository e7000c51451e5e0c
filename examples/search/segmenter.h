// friso, a segmenter for Chinese text in GBK: finds the words of a text.

#ifndef SGBK_EXAMPLES_SEGMENTER_H
#define SGBK_EXAMPLES_SEGMENTER_H

#include <stdexcept>
#include <string>

// After the standard headers, since this one defines print() as a macro.
extern "C" {
#include <friso/friso.h>
}

class Segmenter {
 public:
  explicit Segmenter(std::string configuration) {
    if (friso_init_from_ifile(friso_, config_, configuration.data()) == 0)
      throw std::runtime_error("cannot load the dictionary of " + configuration);
  }
  ~Segmenter() {
    friso_free_task(task_);
    friso_free_config(config_);
    friso_free(friso_);
  }
  Segmenter(const Segmenter&) = delete;
  Segmenter& operator=(const Segmenter&) = delete;

  // Calls forWord with each word of GBK text, in order; punctuation is left out.
  template <class ForWord>
  void segment(std::string gbk, ForWord forWord) {
    friso_set_text(task_, gbk.data());
    while (const friso_token_t token = config_->next_token(friso_, config_, task_))
      if (token->type != __LEX_PUNC_WORDS__) forWord(std::string(token->word));
  }

 private:
  friso_t friso_ = friso_new();
  friso_config_t config_ = friso_new_config();
  friso_task_t task_ = friso_new_task();
};

#endif
