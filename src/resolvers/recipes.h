#pragma once

#include <memory>

class SiteRecipe;

// The sites' recipes, as the site table makes them. Each is defined in the
// site's own recipe file.
std::unique_ptr<SiteRecipe> makeRapidShareRecipe();
