#include <Infrastructure/OxaCore/CallbackTask.h>

#include <Infrastructure/OxaCore/Thread.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <stdexcept>
#include <string>
#include <type_traits>

using namespace Oxa::Core;

namespace {

static_assert(std::is_base_of_v<Task, CallbackTask>);
static_assert(std::is_base_of_v<Task, CallbackRetTask<int>>);
static_assert(std::is_base_of_v<Task, CallbackArgTask<int>>);
static_assert(std::is_base_of_v<Task, CallbackRetArgTask<int, int>>);

class NeverStop : public TaskDirective {
 public:
  bool MustStop() override { return false; }
};

class Recorder {
 public:
  void Plain() { m_sText += "plain"; }
  int Ret() { return 17; }
  double Fraction() { return 2.75; }
  void Arg(std::string text) { m_sText += text; }
  void ConstArg(const std::string& text) { m_sText += text; }
  int RetArg(int number) { return 3 * number; }
  void Value(boost::shared_ptr<double> value) { m_dValue = *value; }
  [[noreturn]] void Fail() { throw std::runtime_error("failed"); }

  std::string m_sText;
  double m_dValue = 0;
};

class CallbackTasks : public testing::Test {
 protected:
  template <class Method>
  boost::shared_ptr<Callback> Calling(Method method) {
    return boost::make_shared<MethodCallback<Recorder>>(&m_recorder, method);
  }

  Recorder m_recorder;
  NeverStop m_directive;
};

TEST_F(CallbackTasks, PlainOneCallsAndGivesZero) {
  CallbackTask task(Calling(&Recorder::Plain));
  EXPECT_EQ(0, task.Run(m_directive));
  EXPECT_EQ("plain", m_recorder.m_sText);
}

TEST_F(CallbackTasks, OneWithAResultGivesIt) {
  CallbackRetTask<int> task(
      boost::make_shared<MethodCallbackRet<Recorder, int>>(&m_recorder, &Recorder::Ret));
  EXPECT_EQ(17, task.Run(m_directive));
}

TEST_F(CallbackTasks, ResultBecomesAnInt) {
  CallbackRetTask<double> task(
      boost::make_shared<MethodCallbackRet<Recorder, double>>(&m_recorder, &Recorder::Fraction));
  EXPECT_EQ(2, task.Run(m_directive));
}

TEST_F(CallbackTasks, OneWithAnArgumentHandsItOnEachTimeAndGivesZero) {
  CallbackArgTask<std::string> task(
      boost::make_shared<MethodCallbackArg<Recorder, std::string>>(&m_recorder, &Recorder::Arg), "text");
  EXPECT_EQ(0, task.Run(m_directive));
  EXPECT_EQ(0, task.Run(m_directive));
  EXPECT_EQ("texttext", m_recorder.m_sText);
}

TEST_F(CallbackTasks, ArgumentIsACopyEvenOfAReference) {
  std::string text = "before";
  CallbackArgTask<const std::string&> task(
      boost::make_shared<MethodCallbackArg<Recorder, const std::string&>>(&m_recorder, &Recorder::ConstArg),
      text);
  text = "after";
  task.Run(m_directive);
  EXPECT_EQ("before", m_recorder.m_sText);
}

TEST_F(CallbackTasks, CopyOfASharedPointerSeesItsTarget) {
  const boost::shared_ptr<double> value = boost::make_shared<double>(1.414);
  CallbackArgTask<boost::shared_ptr<double>> task(
      boost::make_shared<MethodCallbackArg<Recorder, boost::shared_ptr<double>>>(&m_recorder,
                                                                                 &Recorder::Value),
      value);
  task.Run(m_directive);
  EXPECT_EQ(1.414, m_recorder.m_dValue);
  *value = 97.2;
  task.Run(m_directive);
  EXPECT_EQ(97.2, m_recorder.m_dValue);
}

TEST_F(CallbackTasks, OneWithBothDoesBoth) {
  CallbackRetArgTask<int, int> task(
      boost::make_shared<MethodCallbackRetArg<Recorder, int, int>>(&m_recorder, &Recorder::RetArg), 5);
  EXPECT_EQ(15, task.Run(m_directive));
}

TEST_F(CallbackTasks, SharesItsCallback) {
  boost::shared_ptr<Callback> callback = Calling(&Recorder::Plain);
  {
    const CallbackTask task(callback);
    EXPECT_EQ(2, callback.use_count());
  }
  EXPECT_EQ(1, callback.use_count());
}

TEST_F(CallbackTasks, ExceptionsPass) {
  CallbackTask task(Calling(&Recorder::Fail));
  EXPECT_THROW(task.Run(m_directive), std::runtime_error);
}

TEST_F(CallbackTasks, RunOnAThread) {
  const boost::shared_ptr<Thread> thread = Thread::Create("Callback");
  EXPECT_TRUE(thread->Start(boost::make_shared<CallbackRetTask<int>>(
      boost::make_shared<MethodCallbackRet<Recorder, int>>(&m_recorder, &Recorder::Ret))));
  const Elapse limit(30);
  thread->WaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
  EXPECT_TRUE(thread->WaitFor(&limit));
  EXPECT_TRUE(thread->HasCompleted());
  EXPECT_EQ(17, thread->GetResult());
}

TEST_F(CallbackTasks, FailedOneEndsItsThreadWithAnError) {
  const boost::shared_ptr<Thread> thread = Thread::Create("Callback");
  EXPECT_TRUE(thread->Start(boost::make_shared<CallbackTask>(Calling(&Recorder::Fail))));
  thread->WaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
  EXPECT_TRUE(thread->IsState(Thread::eTHREAD_ERROR));
  ASSERT_TRUE(thread->GetLastError());
  EXPECT_EQ("Thread Callback terminated due to an unknown error thrown from Task Run()",
            thread->GetLastError()->GetData(AlertInfo::sMESSAGE));
}

}  // namespace
