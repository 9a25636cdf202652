// The part of AppKit that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#import <Foundation/Foundation.h>

enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2,
};

@interface NSRunningApplication : NSObject
@property(readonly) pid_t processIdentifier;
@property(readonly, copy) NSString *bundleIdentifier, *localizedName;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
@end

@interface NSWorkspace : NSObject
@property(class, readonly) NSWorkspace* sharedWorkspace;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
@property(readonly) NSRunningApplication* frontmostApplication;
@end

@interface NSScreen : NSObject
@property(class, readonly) NSScreen* mainScreen;
@property(readonly, copy) NSDictionary<NSString*, id>* deviceDescription;
@property(readonly) CGFloat backingScaleFactor;
@end
