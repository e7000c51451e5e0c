// The one converter of the process: its lock, its creation and its destruction.

#include <pthread.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "core/ascii_overlay.h"
#include "core/table_images.h"
#include "core/undefined_codes.h"
#include "sgbk/EncodingConvertor.h"

namespace {

pthread_mutex_t enmutex = PTHREAD_MUTEX_INITIALIZER;

class Lock {
 public:
  Lock() { pthread_mutex_lock(&enmutex); }
  ~Lock() { pthread_mutex_unlock(&enmutex); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
};

// Held by another thread at a fork, it would stay locked in the child; the creation that it guarded
// is not seen there.
const int isUnlockedInChildren =
    pthread_atfork(nullptr, nullptr, [] { enmutex = PTHREAD_MUTEX_INITIALIZER; });

bool blanksUndefinedCodes(const unsigned short* t2stable) {
  for (unsigned code = 0; code < sgbk::kTableEntries; ++code) {
    const auto unit = static_cast<gchar_t>(code);
    if (isGBKUndefinedChar(unit) && t2stable[unit] != CHINESE_SPACE_CHAR) return false;
  }
  return true;
}

const unsigned short* entriesOf(const char (&table)[sgbk::kTableEntries][2]) {
  return reinterpret_cast<const unsigned short*>(table);
}

}  // namespace

bool sgbk::tableBlanksUndefinedCodes = false;

EncodingConvertor* EncodingConvertor::instance = nullptr;

EncodingConvertor::EncodingConvertor() = default;
EncodingConvertor::~EncodingConvertor() = default;

int EncodingConvertor::initializeInstance(const char* pathname) {
  const Lock lock;
  if (instance != nullptr) return 0;
  std::unique_ptr<EncodingConvertor> converter(new (std::nothrow) EncodingConvertor);
  if (converter == nullptr || converter->initialize(pathname) < 0) return -1;
  // A thread that gets the pointer from getInstance also sees complete tables.
  std::atomic_ref(instance).store(converter.release(), std::memory_order_release);
  return 0;
}

EncodingConvertor* EncodingConvertor::getInstance() {
  return std::atomic_ref(instance).load(std::memory_order_acquire);
}

void EncodingConvertor::clear() {
  const Lock lock;
  delete std::atomic_ref(instance).exchange(nullptr, std::memory_order_acq_rel);
}

int EncodingConvertor::initialize(const char*) {
  std::memcpy(b2gtable, _binary_data_big52sgbk_ctb_start, sgbk::kTableBytes);
  setANSI(b2gtable);
  std::memcpy(t2stable, _binary_data_gbkt2s_ctb_start, sgbk::kTableBytes);
  setANSI(t2stable);
  std::memcpy(u2gtable, _binary_data_uc2sgbk_ctb_start, sgbk::kTableBytes);
  setANSI(u2gtable);
  std::memcpy(g2btable, _binary_data_gbk2big5_ctb_start, sgbk::kTableBytes);
  pu16t2stbl = entriesOf(t2stable);
  pu16b2gtbl = entriesOf(b2gtable);
  pu16u2gtbl = entriesOf(u2gtable);
  pu16g2btbl = entriesOf(g2btable);
  sgbk::tableBlanksUndefinedCodes = blanksUndefinedCodes(pu16t2stbl);
  return 0;
}

void EncodingConvertor::setANSI(char (*ctable)[2]) {
  std::memcpy(ctable, sgbk::kAsciiOverlay.data(), sizeof sgbk::kAsciiOverlay);
}

gchar_t EncodingConvertor::getucgvalue(unsigned short uc) { return pu16u2gtbl[uc]; }
