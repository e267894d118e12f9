#include "VorselKelpGtk/Attach.h"

#include <gtk/gtk.h>

#include <utility>
#include <vector>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpFreedesktop/Application.h"
#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpGtk/Stage.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSystem/Description.h"
#include "application/WindowWatch.h"
#include "glib/Pointers.h"

namespace VorselKelp::gtk {
namespace {

/// The system's question, over the application's window.
class StageAsker final : public system::PermissionAsker {
 public:
  StageAsker(std::weak_ptr<Stage> stage, std::string application)
      : stage_(std::move(stage)), application_(std::move(application)) {}

  void ask(unsigned, Answer answer) override {
    const auto stage = stage_.lock();
    if (!stage) return answer(Error{"There is no window to ask the user in"});
    const auto kept = std::make_shared<Answer>(std::move(answer));
    stage->askPermission(application_, [kept](std::optional<bool> allowed) {
      (*kept)(allowed ? Result<bool>(*allowed) : Error{"The window was closed before the user had answered"});
    });
  }

 private:
  const std::weak_ptr<Stage> stage_;
  const std::string application_;
};

class AttachedApplication final : public Attached, public std::enable_shared_from_this<AttachedApplication> {
 public:
  AttachedApplication(GtkApplication* application, std::string description, AttachOptions options)
      : application_(GTK_APPLICATION(g_object_ref(application))),
        file_(std::move(description)),
        options_(std::move(options)) {
    g_signal_connect(application_.get(), "startup", G_CALLBACK(&AttachedApplication::onStartup), this);
    g_signal_connect(application_.get(), "shutdown", G_CALLBACK(&AttachedApplication::onShutdown), this);
  }
  AttachedApplication(const AttachedApplication&) = delete;
  AttachedApplication& operator=(const AttachedApplication&) = delete;
  ~AttachedApplication() override {
    g_signal_handlers_disconnect_by_data(application_.get(), this);
    end();
  }

  bool started() const override { return desktop_ != nullptr; }
  void whenReady(std::function<void()> ready) override {
    if (desktop_) return VorselKellp::whenInitialised(std::move(ready));
    waiting_.push_back(std::move(ready));
  }
  void askForPermission() override {
    if (!desktop_) return;
    if (options_.webViews) return VorselKellp::askForNotificationPermissionWith(root_);
    VorselKellp::askForNotificationsPermission();
  }
  void present(const std::shared_ptr<ui::ViewController>& screen) override {
    if (stage_) stage_->presenter()->present(screen, root_, true);
  }
  void notification(const std::string& identifier, Found found) const override {
    if (desktop_) return desktop_->notification(identifier, std::move(found));
    found(std::nullopt);
  }
  void screenAppeared() override {
    if (desktop_) desktop_->running().screenAppeared();
  }

 private:
  static void onStartup(GtkApplication*, AttachedApplication* self) {
    const auto status = self->start();
    if (!status)
      posix::standardErrorLines()("The application goes on without pushes. " + status.error().description);
  }
  /// What is shown holds the core, and goes before it.
  static void onShutdown(GtkApplication*, AttachedApplication* self) { self->end(); }

  Status start() {
    const auto description = system::loadDescription(file_);
    if (!description) return description.error();
    stage_ = makeStage({options_.overlay, root_, [this](bool appeared) {
                          if (!desktop_) return;
                          auto& running = desktop_->running();
                          appeared ? running.screenAppeared() : running.screenDisappeared();
                        }});
    freedesktop::ApplicationOptions options;
    options.configure = options_.configure;
    options.openArticle = options_.openArticle;
    options.raise = [this](const std::string& token) { raise(token); };
    options.openCampaign = options_.openCampaign;
    options.received = options_.received;
    options.registrationFailed = options_.registrationFailed;
    options.screen = stage_->screen();
    options.viewPresenter = stage_->presenter();
    options.webViews = options_.webViews;
    options.asker = std::make_shared<StageAsker>(stage_, description->name);
    auto started =
        freedesktop::startApplication(G_APPLICATION(application_.get()), *description, std::move(options));
    if (!started) return started.error();
    desktop_ = *std::move(started);
    windows_ =
        std::make_unique<WindowWatch>(application_.get(), desktop_->running(), freedesktop::makeMainQueue(),
                                      [this] { return desktop_->idle(); });
    for (auto& ready : std::exchange(waiting_, {})) VorselKellp::whenInitialised(std::move(ready));
    return Done{};
  }

  void raise(const std::string& token) {
    g_application_activate(G_APPLICATION(application_.get()));
    auto* window = gtk_application_get_active_window(application_.get());
    if (window == nullptr) return;
    if (!token.empty()) gtk_window_set_startup_id(window, token.c_str());
    gtk_window_present(window);
  }

  void end() {
    windows_ = nullptr;
    stage_ = nullptr;
    if (const auto shown = root_->presentedViewController()) shown->unlink();
    if (const auto desktop = std::exchange(desktop_, nullptr)) desktop->leave();
  }

  const freedesktop::ObjectPtr<GtkApplication> application_;
  const std::string file_;
  const AttachOptions options_;
  /// Stands for the application's own screen.
  const std::shared_ptr<ui::ViewController> root_ = std::make_shared<ui::ViewController>();
  std::shared_ptr<Stage> stage_;
  std::shared_ptr<freedesktop::Application> desktop_;
  std::unique_ptr<WindowWatch> windows_;
  std::vector<std::function<void()>> waiting_;
};

}  // namespace

std::shared_ptr<Attached> attach(GtkApplication* application, std::string description,
                                 AttachOptions options) {
  return std::make_shared<AttachedApplication>(application, std::move(description), std::move(options));
}

}  // namespace VorselKelp::gtk
