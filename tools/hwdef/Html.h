#pragma once

#include <string>
#include <string_view>

/// The text as HTML shows it, in content and in quoted attributes: nothing in it is markup, and what no
/// document can hold (control characters, bytes that are no UTF-8) appears as "\x1b".
std::string html(std::string_view text);

/// A length in pixels with one digit behind the point, whatever the locale.
std::string pixels(double length);
