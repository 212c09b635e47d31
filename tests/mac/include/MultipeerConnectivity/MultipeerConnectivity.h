#pragma once

#include <Foundation/Foundation.h>

@class MCNearbyServiceAdvertiser, MCSession;

_Pragma("clang assume_nonnull begin")

    typedef NS_ENUM(NSInteger, MCSessionState) {
      MCSessionStateNotConnected = 0,
      MCSessionStateConnecting = 1,
      MCSessionStateConnected = 2
    };
typedef NS_ENUM(NSInteger, MCSessionSendDataMode) { MCSessionSendDataReliable = 0 };
typedef NS_ENUM(NSInteger, MCEncryptionPreference) { MCEncryptionRequired = 1 };

@interface MCPeerID : NSObject <NSCopying>
- (instancetype)initWithDisplayName:(NSString*)myDisplayName;
@property(readonly, copy) NSString* displayName;
@end

@protocol MCSessionDelegate <NSObject>
- (void)session:(MCSession*)session peer:(MCPeerID*)peerID didChangeState:(MCSessionState)state;
- (void)session:(MCSession*)session didReceiveData:(NSData*)data fromPeer:(MCPeerID*)peerID;
- (void)session:(MCSession*)session
    didReceiveStream:(NSInputStream*)stream
            withName:(NSString*)streamName
            fromPeer:(MCPeerID*)peerID;
- (void)session:(MCSession*)session
    didStartReceivingResourceWithName:(NSString*)resourceName
                             fromPeer:(MCPeerID*)peerID
                         withProgress:(NSProgress*)progress;
- (void)session:(MCSession*)session
    didFinishReceivingResourceWithName:(NSString*)resourceName
                              fromPeer:(MCPeerID*)peerID
                                 atURL:(nullable NSURL*)localURL
                             withError:(nullable NSError*)error;
@end

@interface MCSession : NSObject
- (instancetype)initWithPeer:(MCPeerID*)myPeerID
            securityIdentity:(nullable NSArray*)identity
        encryptionPreference:(MCEncryptionPreference)encryptionPreference;
@property(nullable, weak) id<MCSessionDelegate> delegate;
@property(readonly) NSArray<MCPeerID*>* connectedPeers;
- (BOOL)sendData:(NSData*)data
         toPeers:(NSArray<MCPeerID*>*)peerIDs
        withMode:(MCSessionSendDataMode)mode
           error:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (void)disconnect;
@end

@protocol MCNearbyServiceAdvertiserDelegate <NSObject>
- (void)advertiser:(MCNearbyServiceAdvertiser*)advertiser
    didReceiveInvitationFromPeer:(MCPeerID*)peerID
                     withContext:(nullable NSData*)context
               invitationHandler:
                   (void (^)(BOOL accept, MCSession* _Nullable session))invitationHandler;
@optional
- (void)advertiser:(MCNearbyServiceAdvertiser*)advertiser
    didNotStartAdvertisingPeer:(NSError*)error;
@end

@interface MCNearbyServiceAdvertiser : NSObject
- (instancetype)initWithPeer:(MCPeerID*)myPeerID
               discoveryInfo:(nullable NSDictionary<NSString*, NSString*>*)info
                 serviceType:(NSString*)serviceType;
@property(nullable, weak) id<MCNearbyServiceAdvertiserDelegate> delegate;
- (void)startAdvertisingPeer;
- (void)stopAdvertisingPeer;
@end

_Pragma("clang assume_nonnull end")
