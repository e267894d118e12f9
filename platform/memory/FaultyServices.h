#pragma once

#include <memory>

#include "VorselKelpTesting/FaultyPlatform.h"

namespace VorselKelp::testing_platform {

using Plan = std::shared_ptr<FaultPlan>;

// Each does what `inner` does, except where the plan says otherwise.
std::shared_ptr<platform::UserDefaults> faultyDefaults(std::shared_ptr<platform::UserDefaults> inner,
                                                       Plan plan);
std::shared_ptr<platform::FileManager> faultyFiles(std::shared_ptr<platform::FileManager> inner, Plan plan);
std::shared_ptr<platform::URLSession> faultySession(std::shared_ptr<platform::URLSession> inner, Plan plan);
std::shared_ptr<platform::NotificationCenter> faultyCenter(
    std::shared_ptr<platform::NotificationCenter> inner, Plan plan);
std::shared_ptr<platform::ImageDecoder> faultyDecoder(std::shared_ptr<platform::ImageDecoder> inner,
                                                      Plan plan);

// These never fail; a stopped process says nothing to them any more.
std::shared_ptr<platform::Application> mutedApplication(std::shared_ptr<platform::Application> inner,
                                                        Plan plan);
std::shared_ptr<platform::MainQueue> mutedQueue(std::shared_ptr<platform::MainQueue> inner, Plan plan);
std::shared_ptr<platform::Console> mutedConsole(std::shared_ptr<platform::Console> inner, Plan plan);
std::shared_ptr<platform::InAppBrowser> mutedBrowser(std::shared_ptr<platform::InAppBrowser> inner,
                                                     Plan plan);

}  // namespace VorselKelp::testing_platform
