// The part of Foundation that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <sys/types.h>

#ifdef __arm64__
using BOOL = bool;
#else
using BOOL = signed char;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

using NSInteger = long;
using NSUInteger = unsigned long;
using NSStringEncoding = NSUInteger;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

__attribute__((objc_root_class))
@interface NSObject
+ (instancetype)alloc;
+ (instancetype)new;
+ (Class)class;
- (instancetype)init;
- (BOOL)isKindOfClass:(Class)kind;
- (instancetype)retain;
- (void)release;
@end

@interface NSAutoreleasePool : NSObject
- (void)drain;
@end

@interface NSString : NSObject
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
@end

@interface NSConstantString : NSString
@end

@interface NSNumber : NSObject
@property(readonly) double doubleValue;
@end

@interface NSArray<Element> : NSObject
@property(readonly) NSUInteger count;
+ (instancetype)arrayWithObject:(Element)element;
- (Element)objectAtIndex:(NSUInteger)index;
@end

@interface NSDictionary<Key, Value> : NSObject
- (Value)objectForKey:(Key)key;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSBundle : NSObject
@property(class, readonly) NSBundle* mainBundle;
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)type;
@end

@interface NSFileManager : NSObject
@property(class, readonly) NSFileManager* defaultManager;
- (BOOL)fileExistsAtPath:(NSString*)path;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly) NSProcessInfo* processInfo;
@property(readonly, copy) NSDictionary<NSString*, NSString*>* environment;
@end

extern "C" NSString* NSUserName();
