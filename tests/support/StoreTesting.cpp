// StoreTesting.cpp - see StoreTesting.h.

#include "support/StoreTesting.h"

#include <stdexcept>

namespace test_support {

FailingSource::FailingSource(const std::string& before,
                             const std::string& after)
    : m_before(before), m_after(after) {
  setg(m_before.data(), m_before.data(), m_before.data() + m_before.size());
}

FailingSource::int_type FailingSource::underflow() {
  if (m_failed) return traits_type::eof();
  m_failed = true;
  setg(m_after.data(), m_after.data(), m_after.data() + m_after.size());
  throw std::runtime_error("read error");
}

int FlushRecorder::sync() {
  flushed.push_back(str());
  return 0;
}

RefusingSink::int_type RefusingSink::overflow(int_type) {
  return traits_type::eof();
}

std::string LineOfLength(size_t length) {
  return "k=" + std::string(length - 2, 'x');
}

}  // namespace test_support
