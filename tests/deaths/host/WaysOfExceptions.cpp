// Exceptions that nobody catches, and what the runtime ends a program for.
#include <Infrastructure/OxaCore/Error.h>

#include <exception>
#include <iterator>
#include <stdexcept>

#include "Ways.h"

using Oxa::Core::LogicError;

namespace {

volatile int s_iSink = 0;

struct Incomplete {
  Incomplete();
  Incomplete(const Incomplete&) = delete;
  Incomplete& operator=(const Incomplete&) = delete;
  virtual ~Incomplete() = default;
  virtual void Missing() = 0;
};

struct Complete : Incomplete {
  void Missing() override { s_iSink = 1; }
};

}  // namespace

DEATHS_SITE void DieByAnError() {
  OXA_RAISE_ERROR("Deaths.Host", LogicError("nobody <catches> this"));
  s_iSink = 1;
}

DEATHS_SITE void DieByAStdException() {
  if (s_iSink == 0) throw std::runtime_error("nobody catches this either");
}

DEATHS_SITE void DieByANumber() {
  if (s_iSink == 0) throw 42;
}

DEATHS_SITE void DieByTerminate() { std::terminate(); }

DEATHS_SITE void DieByAPureCall(Incomplete* object) {
  object->Missing();
  s_iSink = 1;
}

Incomplete::Incomplete() { DieByAPureCall(this); }

DEATHS_SITE void BeginIncomplete() { const Complete object; }

DEATHS_SITE void DieAtANoexcept() noexcept {
  DieByAnError();
  s_iSink = 1;
}

DEATHS_SITE void FaultAtANoexcept() noexcept {
  Deaths::FindWay("null-write")();
  s_iSink = 1;
}

// An exception while another one is unwinding.
DEATHS_SITE void DieWhileUnwinding() {
  struct Worse {
    ~Worse() { DieByAnError(); }
  } worse;
  DieByANumber();
}

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"error", &DieByAnError},
    {"std-exception", &DieByAStdException},
    {"number", &DieByANumber},
    {"terminate", &DieByTerminate},
    {"pure-call", &BeginIncomplete},
    {"noexcept", &DieAtANoexcept},
    {"noexcept-fault", &FaultAtANoexcept},
    {"unwinding", &DieWhileUnwinding},
};

}  // namespace

Ways WaysOfExceptions() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
