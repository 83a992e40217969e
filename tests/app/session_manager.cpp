// SPDX-License-Identifier: BSD-3-Clause

// A minimal session manager for the X desktop's protocol: prints the address for SESSION_MANAGER,
// then, for each line on standard input, asks its client to agree to the end of the session and
// prints "granted" or "refused".

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <unistd.h>

#include <X11/SM/SMlib.h>

namespace {

SmsConn client = nullptr;
bool endOfSession = false;  // the current question is about the end, not about registering
bool canceled = false;

Bool AcceptHost(char*) {
    return True;
}

Status RegisterClient(SmsConn connection, SmPointer, char* previousId) {
    std::free(previousId);
    SmsRegisterClientReply(connection, SmsGenerateClientID(connection));
    SmsSaveYourself(connection, SmSaveLocal, False, SmInteractStyleNone, False);
    client = connection;
    return 1;
}

void InteractRequest(SmsConn connection, SmPointer, int) {
    SmsInteract(connection);
}

void InteractDone(SmsConn, SmPointer, Bool cancelShutdown) {
    canceled = canceled || cancelShutdown;
}

void SaveYourselfRequest(SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}

void SaveYourselfPhase2Request(SmsConn connection, SmPointer) {
    SmsSaveYourselfPhase2(connection);
}

void SaveYourselfDone(SmsConn connection, SmPointer, Bool) {
    if (!endOfSession) {
        SmsSaveComplete(connection);
        return;
    }
    endOfSession = false;
    std::puts(canceled ? "refused" : "granted");
    std::fflush(stdout);
    SmsShutdownCancelled(connection);
}

void CloseConnection(SmsConn connection, SmPointer, int count, char** reasons) {
    SmFreeReasons(count, reasons);
    IceConn ice = SmsGetIceConnection(connection);
    SmsCleanUp(connection);
    IceSetShutdownNegotiation(ice, False);
    IceCloseConnection(ice);
    std::exit(0);
}

void SetProperties(SmsConn, SmPointer, int count, SmProp** properties) {
    for (int i = 0; i < count; ++i) SmFreeProperty(properties[i]);
    std::free(properties);
}

void DeleteProperties(SmsConn, SmPointer, int count, char** names) {
    for (int i = 0; i < count; ++i) std::free(names[i]);
    std::free(names);
}

void GetProperties(SmsConn connection, SmPointer) {
    SmsReturnProperties(connection, 0, nullptr);
}

Status NewClient(SmsConn, SmPointer, unsigned long* mask, SmsCallbacks* callbacks, char**) {
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask |
            SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask |
            SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;
    callbacks->register_client.callback = RegisterClient;
    callbacks->interact_request.callback = InteractRequest;
    callbacks->interact_done.callback = InteractDone;
    callbacks->save_yourself_request.callback = SaveYourselfRequest;
    callbacks->save_yourself_phase2_request.callback = SaveYourselfPhase2Request;
    callbacks->save_yourself_done.callback = SaveYourselfDone;
    callbacks->close_connection.callback = CloseConnection;
    callbacks->set_properties.callback = SetProperties;
    callbacks->delete_properties.callback = DeleteProperties;
    callbacks->get_properties.callback = GetProperties;
    return 1;
}

IceConn Accept(IceListenObj* listeners, int count) {
    pollfd waiting{IceGetListenConnectionNumber(listeners[count - 1]), POLLIN, 0};
    poll(&waiting, 1, -1);
    IceAcceptStatus status = IceAcceptFailure;
    IceConn connection = IceAcceptConnection(listeners[count - 1], &status);
    if (status != IceAcceptSuccess) std::exit(1);
    while (IceConnectionStatus(connection) == IceConnectPending) {
        IceProcessMessages(connection, nullptr, nullptr);
    }
    return connection;
}

void AskForTheEnd() {
    char line[16];
    if (std::fgets(line, sizeof line, stdin) == nullptr) std::exit(0);
    endOfSession = true;
    canceled = false;
    SmsSaveYourself(client, SmSaveBoth, True, SmInteractStyleAny, False);
}

}  // namespace

int main() {
    char error[256] = "";
    IceListenObj* listeners = nullptr;
    int count = 0;
    if (!SmsInitialize("test", "1", NewClient, nullptr, AcceptHost, sizeof error, error) ||
        !IceListenForConnections(&count, &listeners, sizeof error, error)) {
        std::fprintf(stderr, "%s\n", error);
        return 1;
    }
    for (int i = 0; i < count; ++i) IceSetHostBasedAuthProc(listeners[i], AcceptHost);
    // The last listener is the socket of this machine; its clients need no network.
    std::puts(IceGetListenConnectionString(listeners[count - 1]));
    std::fflush(stdout);

    IceConn connection = Accept(listeners, count);
    while (true) {
        pollfd waiting[] = {{IceConnectionNumber(connection), POLLIN, 0},
                            {STDIN_FILENO, POLLIN, 0}};
        poll(waiting, client != nullptr ? 2 : 1, -1);
        if (waiting[0].revents != 0 &&
            IceProcessMessages(connection, nullptr, nullptr) != IceProcessMessagesSuccess) {
            return 0;
        }
        if (client != nullptr && waiting[1].revents != 0) AskForTheEnd();
    }
}
