#include "quartzcore/CAAnimation.h"

namespace tallyforge {

std::shared_ptr<CABasicAnimation> CABasicAnimation::animationWithKeyPath(std::string keyPath) {
    auto animation = std::make_shared<CABasicAnimation>();
    animation->setKeyPath(std::move(keyPath));
    return animation;
}

std::shared_ptr<CAKeyframeAnimation> CAKeyframeAnimation::animationWithKeyPath(std::string keyPath) {
    auto animation = std::make_shared<CAKeyframeAnimation>();
    animation->setKeyPath(std::move(keyPath));
    return animation;
}

std::shared_ptr<CAAnimation> CAAnimationGroup::copy() const {
    auto group = std::make_shared<CAAnimationGroup>(*this);
    group->animations_.clear();
    for (const auto& animation : animations_) {
        if (animation) group->animations_.push_back(animation->copy());
    }
    return group;
}

} // namespace tallyforge
