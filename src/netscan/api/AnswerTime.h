#pragma once

#include "netscan/api/ScanLoop.h"

namespace quarl::netscan {

/// How long answers are waited for: a time after the last question.
class AnswerTime {
 public:
  void Asked(ScanLoop& loop, ScanLoop::Clock::duration time) {
    loop_ = &loop;
    end_ = loop.Time() + time;
  }
  bool Over() const { return loop_ == nullptr || loop_->Time() >= end_; }

 private:
  ScanLoop* loop_ = nullptr;  ///< null before the first question
  ScanLoop::Clock::time_point end_;
};

}  // namespace quarl::netscan
