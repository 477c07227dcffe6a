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

// Makes a process-wide choice (read by Get, made by Set) for its lifetime.
template <bool (*Get)(), void (*Set)(bool)>
class ScopedChoice {
 public:
  explicit ScopedChoice(bool on) : m_before(Get()) { Set(on); }
  ~ScopedChoice() { Set(m_before); }

  ScopedChoice(const ScopedChoice&) = delete;
  ScopedChoice& operator=(const ScopedChoice&) = delete;

 private:
  bool m_before;
};

typedef ScopedChoice<&PropertySafety::StrictValues,
                     &PropertySafety::SetStrictValues>
    ScopedStrictValues;
typedef ScopedChoice<&PropertySafety::LongLines, &PropertySafety::SetLongLines>
    ScopedLongLines;
typedef ScopedChoice<&PropertyLayout::KeepLayout,
                     &PropertyLayout::SetKeepLayout>
    ScopedKeepLayout;

}  // namespace test_support

#endif  // TESTS_SUPPORT_SAFETYSETTINGS_H_
