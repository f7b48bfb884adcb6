#include "Platform/Kill.h"

#include "Platform/Linux/KillState.h"

namespace Oxa::Core::Platform {

__thread KillState t_kill;

void HoldKill::Take() noexcept {
  t_kill.Hold();
  m_bHeld = true;
}

void HoldKill::Release() noexcept {
  m_bHeld = false;
  t_kill.LetGo();
}

KillCleanUp::KillCleanUp(Action action, void* subject) noexcept
    : m_pAction(action), m_pSubject(subject), m_pOuter(nullptr) {
  t_kill.Push(*this);
}

KillCleanUp::~KillCleanUp() { t_kill.Pop(*this); }

}  // namespace Oxa::Core::Platform
