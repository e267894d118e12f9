#pragma once

namespace VorselKelp::ui {

/// How the device is held. In landscape left its top points to the left.
enum class DeviceOrientation {
  unknown,
  portrait,
  portraitUpsideDown,
  landscapeLeft,
  landscapeRight,
  faceUp,
  faceDown,
};

/// A set of orientations in which a screen may be shown; values are added up.
enum InterfaceOrientations : unsigned {
  interfacePortrait = 1,
  interfaceLandscapeLeft = 2,
  interfaceLandscapeRight = 4,
  interfaceLandscape = interfaceLandscapeLeft | interfaceLandscapeRight,
  interfaceAll = interfacePortrait | interfaceLandscape,
};

}  // namespace VorselKelp::ui
