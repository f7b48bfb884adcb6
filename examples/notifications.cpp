#include <Infrastructure/OxaCore/Notifications.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

using namespace Oxa::Core;

class DoorGuard : public NotificationListener {  // whoever wants to hear of doors
 public:
  virtual void DoorOpened(int door) = 0;
};

// The event: knows whom it is for, and what to call.
class DoorOpened : public NotificationTo<DoorGuard> {
 public:
  explicit DoorOpened(int door) : m_iDoor(door) {}

 private:
  void Tell(DoorGuard& guard) override { guard.DoorOpened(m_iDoor); }
  int m_iDoor;
};

class Instrument {  // publishes; knows nobody who listens
 public:
  void AddGuard(DoorGuard& guard) { m_guards.AddListener(guard); }
  void OpenDoor(int door) {
    DoorOpened opened(door);
    m_guards.Broadcast(opened);
  }

 private:
  NotificationSupport m_guards{NotificationSupport::eFIRST_ADDED_FIRST};
};

class Lamp : public DoorGuard {
 public:
  void DoorOpened(int door) override { std::cout << "lamp: door " << door << " is open\n"; }
};

class Laser : public DoorGuard {
 public:
  void DoorOpened(int door) override {
    std::cout << "laser: off\n";
    if (door == 2) OXA_RAISE_ERROR("Example.Laser", HardwareError("The shutter hangs"));
  }
};

int main() {
  InitializeOxaCore();
  Instrument instrument;
  Lamp lamp;
  {
    Laser laser;
    instrument.AddGuard(laser);
    instrument.AddGuard(lamp);
    instrument.OpenDoor(2);  // what the laser raises is told and logged; the lamp hears all the same
  }                          // a listener that dies is heard no more
  instrument.OpenDoor(3);
  ShutdownOxaCore();
}
