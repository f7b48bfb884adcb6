// One event of one number, delivered on the spot to nobody, one or ten listeners.
#include "BenchSupport.h"

#include <Infrastructure/OxaCore/Notifications.h>

#include <array>

#ifdef OXA_PEER_QT
#include <QObject>
#include <QSignalMapper>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/BasicEvent.h>
#include <Poco/Delegate.h>
#endif
#ifdef OXA_PEER_BOOST
#include <boost/signals2/signal.hpp>
#endif

namespace {

using namespace Oxa::Core;

// An interface of its own, as hosts have one for each kind of event.
class Gauge : public NotificationListener {
 public:
  virtual void Moved(int value) = 0;
};

class Needle : public Gauge {
 public:
  void Moved(int value) override { m_lSum += value; }
  long m_lSum = 0;
};

class GaugeMoved : public Notification {
 public:
  explicit GaugeMoved(int value) : m_iValue(value) {}
  void Notify(NotificationListener& listener) override {
    if (auto* const gauge = dynamic_cast<Gauge*>(&listener)) gauge->Moved(m_iValue);
  }

 private:
  int m_iValue;
};

// The same by way of the template, which casts once for many listeners of a class.
class GaugeTold : public NotificationTo<Gauge> {
 public:
  explicit GaugeTold(int value) : m_iValue(value) {}

 private:
  void Tell(Gauge& gauge) override { gauge.Moved(m_iValue); }

  int m_iValue;
};

template <class Event, std::size_t Listeners>
void Ours(benchmark::State& state) {
  NotificationSupport support(NotificationSupport::eFIRST_ADDED_FIRST);
  std::array<Needle, Listeners> needles;
  for (Needle& needle : needles) support.AddListener(needle);
  int value = 0;
  for (auto _ : state) {
    Event moved(++value);
    support.Broadcast(moved);
  }
  for (const Needle& needle : needles) benchmark::DoNotOptimize(needle.m_lSum);
}
OXA_BENCH("Notification to 0 listeners", "Ours", (Ours<GaugeTold, 0>));
OXA_BENCH("Notification to 1 listener", "Ours", (Ours<GaugeTold, 1>));
OXA_BENCH("Notification to 10 listeners", "Ours", (Ours<GaugeTold, 10>));
OXA_BENCH("Notification to 0 listeners, each cast", "Ours", (Ours<GaugeMoved, 0>));
OXA_BENCH("Notification to 1 listener, each cast", "Ours", (Ours<GaugeMoved, 1>));
OXA_BENCH("Notification to 10 listeners, each cast", "Ours", (Ours<GaugeMoved, 10>));

#ifdef OXA_PEER_QT
class QtNeedle : public QObject {
 public:
  void Moved(int value) { m_lSum += value; }
  long m_lSum = 0;
};

// A signal of Qt's own that anybody may emit; moc writes the same code for a host's signal.
template <std::size_t Listeners>
void Qt(benchmark::State& state) {
  QSignalMapper source;
  std::array<QtNeedle, Listeners> needles;
  for (QtNeedle& needle : needles) {
    QObject::connect(&source, &QSignalMapper::mappedInt, &needle, &QtNeedle::Moved, Qt::DirectConnection);
  }
  int value = 0;
  for (auto _ : state) emit source.mappedInt(++value);
  for (const QtNeedle& needle : needles) benchmark::DoNotOptimize(needle.m_lSum);
}
OXA_BENCH("Notification to 0 listeners", "Qt", Qt<0>);
OXA_BENCH("Notification to 1 listener", "Qt", Qt<1>);
OXA_BENCH("Notification to 10 listeners", "Qt", Qt<10>);
OXA_BENCH("Notification to 0 listeners, each cast", "Qt", Qt<0>);
OXA_BENCH("Notification to 1 listener, each cast", "Qt", Qt<1>);
OXA_BENCH("Notification to 10 listeners, each cast", "Qt", Qt<10>);
#endif

#ifdef OXA_PEER_POCO
class PocoNeedle {
 public:
  void Moved(int& value) { m_lSum += value; }
  long m_lSum = 0;
};

template <std::size_t Listeners>
void PocoEvent(benchmark::State& state) {
  Poco::BasicEvent<int> moved;
  std::array<PocoNeedle, Listeners> needles;
  for (PocoNeedle& needle : needles) moved += Poco::delegate(&needle, &PocoNeedle::Moved);
  int value = 0;
  for (auto _ : state) {
    ++value;
    moved.notify(nullptr, value);
  }
  for (const PocoNeedle& needle : needles) benchmark::DoNotOptimize(needle.m_lSum);
}
OXA_BENCH("Notification to 0 listeners", "Poco", PocoEvent<0>);
OXA_BENCH("Notification to 1 listener", "Poco", PocoEvent<1>);
OXA_BENCH("Notification to 10 listeners", "Poco", PocoEvent<10>);
#endif

#ifdef OXA_PEER_BOOST
class BoostNeedle {
 public:
  void Moved(int value) { m_lSum += value; }
  long m_lSum = 0;
};

template <std::size_t Listeners>
void BoostSignal(benchmark::State& state) {
  boost::signals2::signal<void(int)> moved;
  std::array<BoostNeedle, Listeners> needles;
  for (BoostNeedle& needle : needles) moved.connect([&needle](int value) { needle.Moved(value); });
  int value = 0;
  for (auto _ : state) moved(++value);
  for (const BoostNeedle& needle : needles) benchmark::DoNotOptimize(needle.m_lSum);
}
OXA_BENCH("Notification to 0 listeners", "boost", BoostSignal<0>);
OXA_BENCH("Notification to 1 listener", "boost", BoostSignal<1>);
OXA_BENCH("Notification to 10 listeners", "boost", BoostSignal<10>);
#endif

}  // namespace
