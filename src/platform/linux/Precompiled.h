#pragma once

// The headers that nearly every adapter of the toolkit needs.
#include <gtkmm/application.h>
#include <gtkmm/box.h>
#include <gtkmm/builder.h>
#include <gtkmm/button.h>
#include <gtkmm/overlay.h>
#include <gtkmm/window.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
