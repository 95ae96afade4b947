#include "service/Service.h"

#include "service/ServiceLoop.h"

namespace quarl::service {

Service::Service(const ServiceParts& parts, ServiceOptions options)
    : loop_(std::make_unique<ServiceLoop>(parts, std::move(options))) {}

Service::~Service() = default;

std::optional<store::ServiceInstance> Service::Start() {
  return loop_->Start();
}

qint64 Service::Step() {
  return loop_->Step();
}

void Service::Stop(int graceMs) {
  loop_->Stop(graceMs);
}

bool Service::Ended() const {
  return loop_->Ended();
}

bool Service::LostStore() const {
  return loop_->LostStore();
}

ServiceFigures Service::Figures() const {
  return loop_->Figures();
}

}  // namespace quarl::service
