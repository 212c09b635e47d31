// The peer link.

#include "mac/fakes/fake_system.h"

using fake::say;

@interface MCPeerID () {
 @public
  NSString* _name;
}
@end
@implementation MCPeerID
- (instancetype)initWithDisplayName:(NSString*)name {
  _name = name;
  return self;
}
- (NSString*)displayName {
  return _name;
}
@end

@implementation MCSession
- (instancetype)initWithPeer:(MCPeerID*)peer
            securityIdentity:(NSArray*)identity
        encryptionPreference:(MCEncryptionPreference)encryption {
  say("session " + fake::text(peer.displayName) + (identity == nil ? " no identity" : "") +
      " encryption " + std::to_string(encryption));
  fake::system().sessions.push_back(self);
  return self;
}
- (NSArray<MCPeerID*>*)connectedPeers {
  NSMutableArray* peers = [NSMutableArray array];
  for (MCPeerID* peer : fake::system().connected) [peers addObject:peer];
  return peers;
}
- (BOOL)sendData:(NSData*)data
         toPeers:(NSArray<MCPeerID*>*)peers
        withMode:(MCSessionSendDataMode)mode
           error:(NSError**)error {
  std::string to;
  for (MCPeerID* peer in peers) to += "[" + fake::text(peer.displayName) + "]";
  const std::string bytes((const char*)data.bytes, data.length);
  say("send mode " + std::to_string(mode) + " to " + to + " " + bytes.substr(4));
  return YES;
}
- (void)disconnect {
  say("disconnect");
}
@end

@implementation MCNearbyServiceAdvertiser
- (instancetype)initWithPeer:(MCPeerID*)peer
               discoveryInfo:(NSDictionary*)info
                 serviceType:(NSString*)type {
  say("advertiser " + fake::text(peer.displayName) + (info == nil ? " no info " : " info ") +
      fake::text(type));
  fake::system().advertiser = self;
  return self;
}
- (void)startAdvertisingPeer {
  say("start advertising");
}
- (void)stopAdvertisingPeer {
  say("stop advertising");
}
@end
