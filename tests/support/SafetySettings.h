// SafetySettings.h - guards for the process-wide choices of PropertySafety
// and PropertyLayout, so that a test that makes one gives the next test the
// process as it found it:
//
//   ScopedStrictValues strict(true);  // every manager without its own choice
//   ScopedLongLines longLines(true);  // every load that starts from now on
//   ScopedKeepLayout keep(true);      // every manager without its own choice
//
// Each guard remembers the choice in force when it was made and makes it
// again when it goes away. Neither class has a call that returns to "not
// chosen", so the choice that was in force is made explicitly: every later
// manager and load then behaves as it would have.

#ifndef TESTS_SUPPORT_SAFETYSETTINGS_H_
#define TESTS_SUPPORT_SAFETYSETTINGS_H_

#include "PropertyLayout.h"
#include "PropertySafety.h"

namespace test_support {

class ScopedStrictValues {
 public:
  explicit ScopedStrictValues(bool on)
      : m_before(PropertySafety::StrictValues()) {
    PropertySafety::SetStrictValues(on);
  }
  ~ScopedStrictValues() { PropertySafety::SetStrictValues(m_before); }

  ScopedStrictValues(const ScopedStrictValues&) = delete;
  ScopedStrictValues& operator=(const ScopedStrictValues&) = delete;

 private:
  bool m_before;
};

class ScopedLongLines {
 public:
  explicit ScopedLongLines(bool on) : m_before(PropertySafety::LongLines()) {
    PropertySafety::SetLongLines(on);
  }
  ~ScopedLongLines() { PropertySafety::SetLongLines(m_before); }

  ScopedLongLines(const ScopedLongLines&) = delete;
  ScopedLongLines& operator=(const ScopedLongLines&) = delete;

 private:
  bool m_before;
};

class ScopedKeepLayout {
 public:
  explicit ScopedKeepLayout(bool on) : m_before(PropertyLayout::KeepLayout()) {
    PropertyLayout::SetKeepLayout(on);
  }
  ~ScopedKeepLayout() { PropertyLayout::SetKeepLayout(m_before); }

  ScopedKeepLayout(const ScopedKeepLayout&) = delete;
  ScopedKeepLayout& operator=(const ScopedKeepLayout&) = delete;

 private:
  bool m_before;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_SAFETYSETTINGS_H_
