#pragma once

#include <memory>

class SiteRecipe;

// The sites' recipes, as the site table makes them. Each is defined in the
// site's own recipe file.
std::unique_ptr<SiteRecipe> makeRapidShareRecipe();
std::unique_ptr<SiteRecipe> makeYoutubeRecipe();
std::unique_ptr<SiteRecipe> makeMegaUploadRecipe();
std::unique_ptr<SiteRecipe> makeFourSharedRecipe();
std::unique_ptr<SiteRecipe> makeMediaFireRecipe();
std::unique_ptr<SiteRecipe> makeDepositFilesRecipe();
std::unique_ptr<SiteRecipe> makeHotFileRecipe();
std::unique_ptr<SiteRecipe> makeFileFactoryRecipe();
