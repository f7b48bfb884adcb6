// Tests that run inside a product: a Test has a name, runs on demand and delivers Results; a TestSuite holds Tests, to
// any depth; a Test::Listener follows a run step by step.
//
// A test fails by raising Test::Failure (the OXA_TEST_ macros and TestEquals do that) or by returning a failing
// Result. Everything else that leaves it is an error of the test. Neither leaves RunTest.
//
// Thread safety: none but that of listeners, which any thread may add and remove. A run takes place on the caller's
// thread; a test that starts threads waits for them itself.
// Failures: RunTest lets nothing out but the cancellation of the thread, and std::bad_alloc of the raising of a
// warning. What a listener throws is told as a ListenerErrorOnNotification and disturbs no run.
// While the library unloads, and while the process exits after a fatal error, raises return: an assertion that fails
// then, on the thread that runs the test, ends neither Setup nor Execute, but what it stands in counts as failed.
//
//   class ProbeTests : public TestSuite {
//    public:
//     ProbeTests() : TestSuite("Probe Tests") {
//       const boost::shared_ptr<ProbeTests> me(this, NoDelete());
//       AddTest(boost::make_shared<TestMethod<ProbeTests>>("Answers", me, &ProbeTests::Answers));
//     }
//    private:
//     void Answers(std::string& text) {
//       OXA_TEST_EQUALS(8, CountChannels());
//       text = "all channels answer";
//     }
//   };
//   ...
//   const bool passed = ProbeTests().RunTest() == Test::Result::ePASSED;
#ifndef INFRASTRUCTURE_OXACORE_AUTOTEST_H
#define INFRASTRUCTURE_OXACORE_AUTOTEST_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Notifications.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Oxa::Core {

/// Base of all tests.
class OXACORE_API Test {
 public:
  /// "%1%", the text: what a test raises that fails.
  class OXACORE_API Failure : public ErrorClass<Failure, LogicError> {
   public:
    explicit Failure(const std::string& text);
    ~Failure() override;
  };

  /// The outcome of one test.
  class OXACORE_API Result {
   public:
    /// How the test ended.
    enum EType : int {
      eDISABLED = -3,   ///< the test was disabled and did not run
      eNO_RESULT = -2,  ///< no results at all; only Test::GetResult gives this
      eERROR = -1,      ///< an error or an exception other than Test::Failure
      eFAILED = 0,
      ePASSED = 1,
      eSUITE = 2  ///< what the Execute of a suite returns; never recorded
    };

    /// eERROR with the message of `error`. Keeps a copy of its class (as its Clone gives it) that isn't raised:
    /// results can be kept and destroyed like any other value. No copy is kept if the cloning fails.
    Result(const std::string& testName, const Error& error);
    /// The same with eFAILED. It is the declared type of the argument that counts.
    Result(const std::string& testName, const Failure& failure);
    Result(const std::string& testName, EType type, const std::string& text);

    // As it was made.
    const std::string& GetTestName() const { return m_testName; }
    EType GetType() const { return m_eType; }
    const std::string& GetText() const { return m_text; }
    /// The error that ended the test, or null. Copies of a result share it.
    boost::shared_ptr<Error> GetFailure() const { return m_spFailure; }

   private:
    std::string m_testName;
    EType m_eType;
    std::string m_text;
    boost::shared_ptr<Error> m_spFailure;
  };

  /// Follows the runs of the tests, and suites, that it is added to. Called on the thread that runs the test.
  class OXACORE_API Listener : public NotificationListener {
   public:
    Listener();
    ~Listener() override;

    /// `test` has something to tell while it runs.
    virtual void CustomNotification(const Test& test);

   protected:
    /// Before Setup. Not called for a test that is disabled.
    virtual void SettingUpTest(const Test& test);
    /// Not called for a test that is disabled or whose Setup failed.
    virtual void ExecutingTest(const Test& test);
    /// The results are there, also those of a test that is disabled or whose Setup failed.
    virtual void TestCompleted(const Test& test);
    /// Before TearDown, which is called at the end of every run.
    virtual void TearingDownTest(const Test& test);

   private:
    friend class TestNotification;
  };

  /// Tells Test::Listener::CustomNotification.
  class OXACORE_API CustomNotification : public NotificationTo<Listener> {
   public:
    /// `test` must outlive the broadcast.
    explicit CustomNotification(const Test& test);
    ~CustomNotification() override;

   protected:
    /// Calls the operation of `listener`.
    void Tell(Listener& listener) override;

   private:
    const Test& m_test;
  };

  /// Enabled, without results.
  explicit Test(const std::string& name);
  Test(const Test&) = delete;
  Test& operator=(const Test&) = delete;
  virtual ~Test();

  /// For tests that have settings: what `config` means is between the test and its host. Do nothing here.
  virtual void ReadConfig(const std::string& config);
  virtual void WriteConfig(const std::string& config);

  /// Whether there is a dialog in which the user sets the test up; none here.
  virtual bool HasSetupGUI();
  /// Shows it; false if there is none, or the user gave up.
  virtual bool LaunchSetupGUI();

 protected:
  /// Called before Execute. What it raises, a Failure too, is an eERROR, and Execute isn't called.
  virtual void Setup();

  /// The test itself. What it returns is recorded, unless it is an eSUITE.
  virtual Result Execute() = 0;

  /// Called at the end of every run, also when the test is disabled, or Setup or Execute failed. What it raises
  /// becomes an ErrorDuringTestNotification.
  virtual void TearDown();

 public:
  /// As it was made with.
  const std::string& GetName() const { return m_name; }

  /// A disabled test doesn't run: RunTest records an eDISABLED, and a suite passes it over. Enabled at first.
  void Enable(bool enabled) { m_bEnabled = enabled; }
  bool IsEnabled() const { return m_bEnabled; }
  bool IsTestSuite() const { return m_bIsTestSuite; }

  /// Runs the test, and gives what GetResult then gives. A test that runs itself again in its Execute ends up with the
  /// results of both runs.
  Result::EType RunTest();
  /// The same, and appends the results to `results`.
  Result::EType RunTest(std::vector<Result>& results);

  /// The worst of the last run: eERROR, else eFAILED, else ePASSED; eNO_RESULT if there is none of these, as for a
  /// disabled test.
  Result::EType GetResult() const;

  /// Puts the results of the last run in place of what the container held. Gives their number.
  int GetResults(std::vector<Result>& results) const;
  /// By the names of their tests; results of one name stay in their order.
  int GetResults(std::multimap<std::string, Result>& results) const;

  /// `listener` isn't owned. Listeners hear in the order of their addition; nobody hears twice.
  void AddListener(Listener& listener);
  /// Also during a run: the listener hears no step that begins after this.
  void RemoveListener(Listener& listener);

  /// Tells `notification` to the listeners, as a test does that has more to tell than its steps.
  void Broadcast(Notification& notification) const;

 private:
  friend class TestSuite;

  bool PrepareRun();
  void PerformRun();
  void ConcludeRun(std::vector<Result>& results);

  std::string m_name;
  std::vector<Result> m_results;  // of the last run
  mutable NotificationSupport m_notifications;
  bool m_bIsTestSuite;
  bool m_bEnabled;
};

/// One step of a run, told to Test::Listeners.
class OXACORE_API TestNotification : public NotificationTo<Test::Listener> {
 public:
  /// Which step; the operations of Test::Listener in their order.
  enum EKind : std::int32_t { eSETTING_UP = 1, eEXECUTING = 2, eCOMPLETED = 3, eTEARING_DOWN = 4 };

  /// `test` must outlive the broadcast.
  TestNotification(EKind kind, const Test& test);
  ~TestNotification() override;

 protected:
  /// Calls the operation of `listener` that belongs to the kind.
  void Tell(Test::Listener& listener) override;

 private:
  EKind m_eKind;
  const Test& m_test;
};

/// "Listener error occurred during notification for test %1%:\n%2%": something failed at the end of a run, as a rule
/// the TearDown. The results stand.
class OXACORE_API ErrorDuringTestNotification : public Warning {
 public:
  ErrorDuringTestNotification(const std::string& testName, const std::string& message);
  ~ErrorDuringTestNotification() override;
};

/// A test that runs its children, in order. It hears them, and tells its own listeners what they tell: who listens to
/// the root follows every test of the tree, suites included.
class OXACORE_API TestSuite : public Test, public Test::Listener {
 public:
  /// Without children.
  explicit TestSuite(const std::string& name);
  ~TestSuite() override;

  /// Appends `test`. One that is a child already becomes a child once more, runs twice and is heard once. False, and
  /// nothing happens, for a null pointer, and for a suite that is this one or holds it: a circle would never end.
  bool AddTest(boost::shared_ptr<Test> test);

  /// Takes `test` out, once; the first place that it has. False if it isn't a child. May be called during a run, which
  /// still runs the children that it began with.
  bool RemoveTest(boost::shared_ptr<Test> test);

  /// Takes all children out. A run that is going on still runs those that it began with.
  void Clear();

  /// Puts the children, in order, in place of what `tests` held.
  void GetTests(std::vector<boost::shared_ptr<Test>>& tests) const;

  /// How many children there are, disabled ones included, those of suites among them not.
  int GetNumChildTests() const;

  /// The tests of the tree beneath this suite; suites among them count if `countSuites` is true. What is disabled
  /// counts, with all beneath it, only if `includeDisabled` is true.
  int GetTotalTests(bool countSuites, bool includeDisabled) const;

  /// Both pass the text on to every child, enabled or not. What a child raises ends the round.
  void ReadConfig(const std::string& config) override;
  void WriteConfig(const std::string& config) override;

  // Each tells the suite's own listeners the same, with the same test.
  void CustomNotification(const Test& test) override;

 protected:
  // Each tells the suite's own listeners the same, with the same test.
  void SettingUpTest(const Test& test) override;
  void ExecutingTest(const Test& test) override;
  void TestCompleted(const Test& test) override;
  void TearingDownTest(const Test& test) override;

  /// Runs the enabled children; all that they deliver are the suite's results.
  Result Execute() override;

 private:
  static bool Holds(const Test& root, const TestSuite& wanted);

  std::list<boost::shared_ptr<Test>> m_tests;
};

/// Holds a measured value against tolerances, which are converted to the unit of the value first: exactly, and on a
/// temperature scale by way of Kelvin, so that equal values may differ by rounding. A tolerance of other dimensions
/// raises XNoUnitConversion, an eERROR of the test. What isn't a number passes no condition.
///
/// The text of a result that passed reads "4.75 V < Test value of 5 V < 5.25 V". If the lower condition fails it is
/// "4.75 V >=  Test value of 4 V", and the upper one isn't looked at; if only that one does, "Test value of 6 V >=
/// 5.25 V". With one condition only its part is there, with none "No tolerance conditions for test".
class OXACORE_API RangeTest : public Test {
 public:
  /// How a value is held against one tolerance.
  enum ECondition : int {
    eNO_CONDITION = 0,  ///< the tolerance isn't used
    eGREATER = 1,       ///< passes if the value is greater than the tolerance
    eLESS = 2,
    eGREATER_OR_EQUAL = 3,
    eLESS_OR_EQUAL = 4  ///< passes if the value is LESS: equality fails, whatever the name and the text say
  };

  /// Tolerances and conditions as SetLowerTolerance and SetUpperTolerance set them.
  RangeTest(const std::string& name, UnitizedValue<double> lower, UnitizedValue<double> upper,
            ECondition lowerCondition, ECondition upperCondition);
  ~RangeTest() override;

  // The two tolerances, each with its condition. For between the runs.
  void SetLowerTolerance(UnitizedValue<double> tolerance, ECondition condition);
  void SetUpperTolerance(UnitizedValue<double> tolerance, ECondition condition);
  void GetTolerances(UnitizedValue<double>& lower, ECondition& lowerCondition, UnitizedValue<double>& upper,
                     ECondition& upperCondition) const;

  /// Whether there is any condition.
  bool HasTolerances() const;

 protected:
  Result Execute() override;

  /// Puts what is to be tested into `value`, which holds no number before. Not called without a condition. What it
  /// raises ends the test.
  virtual void GetTestValue(UnitizedValue<double>& value) = 0;

 private:
  UnitizedValue<double> m_lowerTolerance;
  UnitizedValue<double> m_upperTolerance;
  ECondition m_eLowerCondition;
  ECondition m_eUpperCondition;
};

/// A deleter that does nothing, for a shared pointer to what somebody else owns, such as `this`.
class NoDelete {
 public:
  /// Does nothing.
  void operator()(const void*) const {}
};

/// For TestMethod: raises a NullPointer, under "Oxa.Core.Test". Where the raise returns it gives an eERROR.
OXACORE_API Test::Result RaiseNullPointer(const std::string& testName, const std::string& variable);

/// A test that calls a member function of `object`: one that returns a Result, or one that passes by returning, with
/// the text that it leaves in its argument, and fails by raising. A null pointer is told as a NullPointer when the test
/// runs.
template <class T>
class TestMethod : public Test {
 public:
  // A method that gives the result, or one that leaves the text of a result that passed in its argument.
  TestMethod(const std::string& name, boost::shared_ptr<T> object, Result (T::*method)())
      : Test(name), m_spObject(std::move(object)), m_pfnResult(method) {}
  TestMethod(const std::string& name, boost::shared_ptr<T> object, void (T::*method)(std::string&))
      : Test(name), m_spObject(std::move(object)), m_pfnText(method) {}

 protected:
  Result Execute() override {
    if (!m_spObject) return RaiseNullPointer(GetName(), "object");
    if (m_pfnResult != nullptr) return (*m_spObject.*m_pfnResult)();
    if (m_pfnText == nullptr) return RaiseNullPointer(GetName(), "method");
    std::string text;
    (*m_spObject.*m_pfnText)(text);
    return Result(GetName(), Result::ePASSED, text);
  }

 private:
  boost::shared_ptr<T> m_spObject;
  Result (T::*m_pfnResult)() = nullptr;
  void (T::*m_pfnText)(std::string&) = nullptr;
};

/// Raises a Test::Failure at `context`, under "Oxa.Core.Test.Failure".
OXACORE_API void RaiseTestFailure(const std::string& text, const CodeContext& context);

/// Raises a Test::Failure, under "Oxa.Core.Test.Failure", if the values differ: "expected: 1 but was: 2".
OXACORE_API void TestEquals(long expected, long actual, const CodeContext& context);

/// Numbers with fractions are compared with a delta; the form above would cut them.
template <class Expected, class Actual,
          class = std::enable_if_t<std::is_floating_point_v<Expected> || std::is_floating_point_v<Actual>>>
void TestEquals(Expected expected, Actual actual, const CodeContext& context) = delete;

/// Raises a Test::Failure, under "Oxa.Core.Test.Failure", if the values differ by more than `delta`: "expected: 1
/// within a delta of: 0.5 but was: 1.6". A difference that isn't a number is not more than anything, so a NaN passes,
/// and so do two infinities of one sign. The form for float rounds the difference to a float.
OXACORE_API void TestEquals(float expected, float actual, float delta, const CodeContext& context);
OXACORE_API void TestEquals(double expected, double actual, double delta, const CodeContext& context);

}  // namespace Oxa::Core

/// Raises a Test::Failure with the source text of the condition unless it holds (variadic for the sake of commas).
#define OXA_TEST_ASSERT(...) \
  ((__VA_ARGS__) ? void() : ::Oxa::Core::RaiseTestFailure(#__VA_ARGS__, OXA_CODE_SITE.MakeContext()))

/// The same with a text of its own, which is built only then.
#define OXA_TEST_ASSERT_MSG(condition, text) \
  ((condition) ? void() : ::Oxa::Core::RaiseTestFailure(text, OXA_CODE_SITE.MakeContext()))

/// Calls TestEquals for this place.
#define OXA_TEST_EQUALS(expected, actual) \
  ::Oxa::Core::TestEquals(expected, actual, OXA_CODE_SITE.MakeContext())

/// The same for numbers with fractions; all three of one type.
#define OXA_TEST_EQUALS_DELTA(expected, actual, delta) \
  ::Oxa::Core::TestEquals(expected, actual, delta, OXA_CODE_SITE.MakeContext())

#endif
