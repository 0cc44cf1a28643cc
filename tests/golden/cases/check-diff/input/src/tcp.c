int serve(const char* name) {
    if (!name)
        return 2;
    while (accept_one(name))
        ;
    return 0;
}

int accept_one(const char* name) {
    if (broken(name))
        return 0; /* not here */
    return listen_on(name);
}
