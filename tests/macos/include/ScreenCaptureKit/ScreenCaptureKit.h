// The part of ScreenCaptureKit that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#import <Foundation/Foundation.h>

#pragma clang attribute push(__attribute__((availability(macos, introduced = 12.3))), apply_to = objc_interface)

@interface SCRunningApplication : NSObject
@property(readonly) pid_t processID;
@end

@interface SCDisplay : NSObject
@property(readonly) CGDirectDisplayID displayID;
@property(readonly) NSInteger width, height;
@property(readonly) CGRect frame;
@end

@interface SCWindow : NSObject
@property(readonly) CGWindowID windowID;
@property(readonly) CGRect frame;
@property(readonly) NSInteger windowLayer;
@property(readonly) SCRunningApplication* owningApplication;
@property(readonly, getter=isOnScreen) BOOL onScreen;
@end

@interface SCShareableContent : NSObject
@property(readonly) NSArray<SCDisplay*>* displays;
@property(readonly) NSArray<SCWindow*>* windows;
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:
                                     (void (^)(SCShareableContent* content, NSError* error))completionHandler;
@end

@interface SCContentFilter : NSObject
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray<SCWindow*>*)excluded;
- (instancetype)initWithDisplay:(SCDisplay*)display includingWindows:(NSArray<SCWindow*>*)included;
@end

@interface SCStreamConfiguration : NSObject
@property std::size_t width, height;
@property CGRect sourceRect;
@property BOOL showsCursor;
@property NSInteger queueDepth;
@end

#pragma clang attribute pop

__attribute__((availability(macos, introduced = 14.0)))
@interface SCScreenshotManager : NSObject
+ (void)captureImageWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
             completionHandler:(void (^)(CGImageRef image, NSError* error))completionHandler;
@end
