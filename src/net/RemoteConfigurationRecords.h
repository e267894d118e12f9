#pragma once

#include <optional>
#include <string>
#include <vector>

#include "json/KeyTable.h"

/// The remote configuration document. Every field is optional unless its type says otherwise.
namespace VorselKelp {

struct KelpAutoconfig {
  std::optional<bool> enabled;
  std::optional<bool> override;
};

struct Category {
  std::string label;
  std::string name;
};

struct Filter {
  std::string key;
  std::string match;
};

/// Look and timing of the permission page; read by the page's script alone.
struct PromtOptions {
  std::optional<std::vector<Category>> category;
  std::optional<std::string> delay;
  std::optional<std::string> icon;
  std::optional<bool> onclick;
  std::optional<bool> onscroll;
  std::optional<std::string> stateButtonNegativePrompt;
  std::optional<std::string> stateButtonPositivePrompt;
  std::optional<std::string> stateTextPrompt;
  std::optional<std::string> buttonColor;
  std::optional<std::string> buttonTextColor;
  std::optional<std::string> description;
  std::optional<std::string> size;
  std::optional<std::string> stateTextGranted;
  std::optional<std::string> style;
  std::optional<std::string> textColor;
  std::optional<bool> visibility;
};

struct Prompt {
  std::string prompt;  ///< "native": the system dialog alone
  std::optional<PromtOptions> options;
  std::optional<std::vector<Filter>> filters;
};

struct PushConfig {
  std::optional<bool> enabled;
  std::optional<bool> override;
  std::optional<std::vector<Prompt>> prompts;
};

/// Endpoint overrides; of each list only the first URL counts.
struct ConfigUrls {
  std::optional<std::vector<std::string>> activity;
  std::optional<std::vector<std::string>> crash;
  std::optional<std::vector<std::string>> user;
};

struct Config {
  std::optional<KelpAutoconfig> consent;
  std::optional<KelpAutoconfig> analytics;
  std::optional<PushConfig> pushConfig;
  std::optional<ConfigUrls> url;
};

namespace json {

template <>
struct KeyTable<KelpAutoconfig> {
  static constexpr auto keys =
      std::tuple{key("enabled", &KelpAutoconfig::enabled), key("override", &KelpAutoconfig::override)};
};

template <>
struct KeyTable<Category> {
  static constexpr auto keys = std::tuple{key("label", &Category::label), key("name", &Category::name)};
};

template <>
struct KeyTable<Filter> {
  static constexpr auto keys = std::tuple{key("key", &Filter::key), key("match", &Filter::match)};
};

template <>
struct KeyTable<PromtOptions> {
  using R = PromtOptions;
  static constexpr auto keys = std::tuple{key("category", &R::category),
                                          key("delay", &R::delay),
                                          key("icon", &R::icon),
                                          key("onclick", &R::onclick),
                                          key("onscroll", &R::onscroll),
                                          key("state_button_negative_prompt", &R::stateButtonNegativePrompt),
                                          key("state_button_positive_prompt", &R::stateButtonPositivePrompt),
                                          key("state_text_prompt", &R::stateTextPrompt),
                                          key("button_color", &R::buttonColor),
                                          key("button_text_color", &R::buttonTextColor),
                                          key("description", &R::description),
                                          key("size", &R::size),
                                          key("state_text_granted", &R::stateTextGranted),
                                          key("style", &R::style),
                                          key("text_color", &R::textColor),
                                          key("visibility", &R::visibility)};
};

template <>
struct KeyTable<Prompt> {
  static constexpr auto keys = std::tuple{key("prompt", &Prompt::prompt), key("options", &Prompt::options),
                                          key("filters", &Prompt::filters)};
};

template <>
struct KeyTable<PushConfig> {
  static constexpr auto keys =
      std::tuple{key("enabled", &PushConfig::enabled), key("override", &PushConfig::override),
                 key("prompts", &PushConfig::prompts)};
};

template <>
struct KeyTable<ConfigUrls> {
  static constexpr auto keys = std::tuple{key("activity", &ConfigUrls::activity),
                                          key("crash", &ConfigUrls::crash), key("user", &ConfigUrls::user)};
};

template <>
struct KeyTable<Config> {
  static constexpr auto keys =
      std::tuple{key("consent", &Config::consent), key("analytics", &Config::analytics),
                 key("push_config", &Config::pushConfig), key("url", &Config::url)};
};

}  // namespace json
}  // namespace VorselKelp
