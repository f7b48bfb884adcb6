// A failure that is met deep down and travels up through five levels, each of which adds its place.
#include "BenchSupport.h"

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <exception>
#include <stdexcept>
#include <string>

#ifdef OXA_PEER_BOOST
#include <boost/exception/all.hpp>
#endif
#ifdef OXA_PEER_KJ
#include <kj/exception.h>
#endif

#define OXA_BENCH_NOINLINE __attribute__((noinline))

namespace {

constexpr int iLEVELS = 5;

OXA_BENCH_NOINLINE void RaiseOurs(int levels) {
  if (levels == 0) {
    OXA_RAISE_ERROR("Bench.Errors", Oxa::Core::InvalidParameter("p_iChannel", 12));
    return;
  }
  try {
    RaiseOurs(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

template <void (*Raise)(int)>
void Forward(benchmark::State& state) {
  for (auto _ : state) {
    try {
      Raise(iLEVELS);
    } catch (...) {
    }
  }
}
OXA_BENCH("Forwarding through 5 levels", "Ours", Forward<RaiseOurs>);

#ifdef OXA_PEER_BOOST
struct BoostError : virtual std::exception, virtual boost::exception {};
using Parameter = boost::error_info<struct ParameterTag, std::string>;

// Each level adds a place of its own, under a tag of its own, as this library keeps one value per tag.
template <int Level>
using PlaceAt = boost::error_info<std::integral_constant<int, Level>, const char*>;

template <int Level>
OXA_BENCH_NOINLINE void RaiseBoostAt() {
  if constexpr (Level == 0) {
    BOOST_THROW_EXCEPTION(BoostError() << Parameter("p_iChannel = 12"));
  } else {
    try {
      RaiseBoostAt<Level - 1>();
    } catch (boost::exception& error) {
      error << PlaceAt<Level>(BOOST_CURRENT_FUNCTION);
      throw;
    }
  }
}
void RaiseBoost(int) { RaiseBoostAt<iLEVELS>(); }
OXA_BENCH("Forwarding through 5 levels", "boost", Forward<RaiseBoost>);
#endif

#ifdef OXA_PEER_KJ
template <int Level>
OXA_BENCH_NOINLINE void RaiseKjAt() {
  if constexpr (Level == 0) {
    kj::throwFatalException(
        kj::Exception(kj::Exception::Type::FAILED, __FILE__, __LINE__, kj::str("p_iChannel = ", 12)));
  } else {
    try {
      RaiseKjAt<Level - 1>();
    } catch (kj::Exception& error) {
      error.wrapContext(__FILE__, __LINE__, kj::str("level ", Level));
      throw;
    }
  }
}
void RaiseKj(int) { RaiseKjAt<iLEVELS>(); }
OXA_BENCH("Forwarding through 5 levels", "kj", Forward<RaiseKj>);
#endif

OXA_BENCH_NOINLINE void RaiseNested(int levels) {
  if (levels == 0) throw std::invalid_argument("p_iChannel = " + std::to_string(12));
  try {
    RaiseNested(levels - 1);
  } catch (...) {
    std::throw_with_nested(std::runtime_error("level " + std::to_string(levels)));
  }
}
OXA_BENCH("Forwarding through 5 levels", "nested", Forward<RaiseNested>);

// The floor: nothing is added on the way.
OXA_BENCH_NOINLINE void RaiseBare(int levels) {
  if (levels == 0) throw std::invalid_argument("p_iChannel = " + std::to_string(12));
  try {
    RaiseBare(levels - 1);
  } catch (std::exception&) {
    throw;
  }
}
OXA_BENCH("Forwarding through 5 levels", "bare rethrow", Forward<RaiseBare>);

}  // namespace
