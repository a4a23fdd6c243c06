import { defineConfig } from "vitest/config";

export default defineConfig({
    base: "./",
    esbuild: { jsx: "automatic", jsxImportSource: "preact" },
    build: {
        target: "es2020",
        // QUORVEL_PAGE_OUT is the build's own folder, so that nothing is written among the sources.
        outDir: process.env["QUORVEL_PAGE_OUT"] ?? "dist",
        emptyOutDir: true,
        assetsInlineLimit: 0,
        modulePreload: false,
        reportCompressedSize: false,
        // The package lists its files by name.
        rollupOptions: {
            output: { entryFileNames: "assets/page.js", assetFileNames: "assets/page[extname]" },
        },
    },
    test: { testTimeout: 120000, hookTimeout: 120000, fileParallelism: false },
});
