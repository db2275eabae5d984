#include "panes/RootPane.h"

#include "panes/PaneMethods.h"
#include "uikit/UIApplication.h"

namespace tallyforge {

namespace {

struct Client {
    const char* scheme;
    const char* profile;
};

// In the order in which they are asked for.
constexpr Client kClients[] = {
    {"tweetbot:", "tweetbot:///user_profile/tallyforge"},
    {"twitterrific:", "twitterrific:///profile?screen_name=tallyforge"},
    {"tweetings:", "tweetings:///user?screen_name=tallyforge"},
    {"twitter:", "twitter://user?screen_name=tallyforge"},
};
constexpr const char* kProfilePage = "https://tallyforge.example/profile";
constexpr const char* kDonationPage = "https://tallyforge.example/donate";

tallyforgeprefsListController& Root(NSObject& self) {
    return static_cast<tallyforgeprefsListController&>(self);
}

constexpr MethodEntry kFollowMe{
    "followMe:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        Root(self).followMe(arguments.object);
        return nullptr;
    }};
constexpr MethodEntry kDonate{
    "donate:", [](NSObject& self, const MethodArguments& arguments) -> MethodResult {
        Root(self).donate(arguments.object);
        return nullptr;
    }};

} // namespace

const MethodTable& tallyforgeprefsListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<tallyforgeprefsListController>, kFollowMe, kDonate>();
}

void tallyforgeprefsListController::followMe(const std::shared_ptr<NSObject>& /*sender*/) {
    UIApplication& application = UIApplication::sharedApplication();
    for (const Client& client : kClients) {
        if (!application.canOpenURL(client.scheme)) continue;
        application.openURL(client.profile);
        return;
    }
    application.openURL(kProfilePage);
}

void tallyforgeprefsListController::donate(const std::shared_ptr<NSObject>& /*sender*/) {
    UIApplication::sharedApplication().openURL(kDonationPage);
}

} // namespace tallyforge
