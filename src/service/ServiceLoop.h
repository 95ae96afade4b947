#pragma once

#include "service/Demands.h"
#include "service/Dispatcher.h"
#include "service/Recorder.h"
#include "service/Scheduler.h"
#include "service/Service.h"

namespace quarl::service {

/// What Service does, and what it does it with.
class ServiceLoop {
 public:
  ServiceLoop(const ServiceParts& parts, ServiceOptions options);
  ~ServiceLoop();
  ServiceLoop(const ServiceLoop&) = delete;
  ServiceLoop& operator=(const ServiceLoop&) = delete;

  std::optional<store::ServiceInstance> Start();
  qint64 Step();
  void Stop(int graceMs);
  bool Ended() const { return phase_ == Phase::Ended; }
  bool LostStore() const { return lost_; }
  ServiceFigures Figures() const;

 private:
  enum class Phase { New, Running, Ending, Ended };

  // --- With the store; these throw StoreError ----------------------------------------------------------------------
  void LookAround();
  void Beat();
  void FollowNews();
  void TakeRequests(const std::vector<store::CheckRequest>& requests);
  void ReadPlan();
  void ReadStates();
  void Write();
  /// The store's content was replaced, or another instance has it.
  void Reclaim();
  void End();

  void StartChecks();
  void StartCheck(const Scheduler::Turn& turn);
  void Arrived(const Scheduler::Turn& turn, const CheckOutcome& outcome);
  void Answer(const std::vector<qint64>& requests);
  /// Runs what needs the store, unless that has just failed. A failure is told once, until the store works again.
  template <typename Body>
  void WithStore(Body&& body);
  void Problem(const QString& text);
  void AbortAll();
  qint64 UntilNextMs();

  ServiceParts with_;
  ServiceOptions options_;
  DirectPolicy policy_;
  std::unique_ptr<PlanIndex> plan_;
  Scheduler scheduler_;
  Recorder recorder_;
  Dispatcher dispatcher_;
  Demands demands_;
  store::ServiceInstance instance_;
  Phase phase_ = Phase::New;
  bool lost_ = false;
  bool storeFails_ = false;
  bool full_ = false;    // no check can be started until an outcome comes
  bool reread_ = false;  // the states that are known are those of another content
  // Times of the steady clock.
  qint64 nextLookMs_ = 0, nextBeatMs_ = 0, nextPlanMs_ = 0, retryStoreMs_ = 0, endByMs_ = 0;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace quarl::service
